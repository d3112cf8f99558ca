constexpr Row kRows[] = {
    ODF_ROW("", ""),
    ODF_ROW("svg", "urn:svg"),
    ODF_ROW("text", "urn:text"),
};
