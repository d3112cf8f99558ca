// The shared string: buffers, copies, changes, encodings.

#include <odfmodel/core/string.h>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

const unsigned short* const kNoUnits = nullptr;

TEST(String, BuffersHoldAMultipleOfEightUnits) {
    constexpr std::pair<std::size_t, std::size_t> kRows[] = {{0, 0},   {1, 7},   {6, 7},     {7, 15},
                                                             {14, 15}, {15, 23}, {22, 23},   {23, 31},
                                                             {70, 71}, {71, 79}, {999, 1007}};
    for (const auto& [length, capacity] : kRows) {
        const std::u16string text(length, u'x');
        EXPECT_EQ(CTulStringW(std::u16string_view(text)).GetCapacity(), capacity) << length;
        std::string utf8;
        for (std::size_t i = 0; i < length; ++i)
            utf8 += "\xE2\x82\xAC"; // three bytes a unit
        EXPECT_EQ(CTulStringW(utf8).GetCapacity(), capacity) << length;
        CTulStringW grown;
        grown.Append(std::u16string_view(text));
        EXPECT_EQ(grown.GetCapacity(), capacity) << length;
        EXPECT_EQ(grown.GetLength(), length);
    }
}

TEST(String, AllEmptyStringsShareOneBuffer) {
    const CTulStringW empty;
    CTulStringW cleared(u"abc");
    cleared.Clear();
    CTulStringW assigned(u"abc");
    assigned = kNoUnits;
    const CTulStringW others[] = {cleared,
                                  assigned,
                                  CTulStringW(kNoUnits),
                                  CTulStringW(u""),
                                  CTulStringW(""),
                                  CTulStringW(u"abc").Left(0),
                                  CTulStringW(u"abc").Mid(3),
                                  CTulStringW(ToUnits(u"\0abc"), 4)};
    for (const CTulStringW& other : others) {
        EXPECT_EQ(other.c_str(), empty.c_str());
        EXPECT_TRUE(other.IsEmpty());
        EXPECT_EQ(other.GetLength(), 0U);
    }
    EXPECT_EQ(*empty.c_str(), 0);
}

struct Change {
    const char* name;
    void (*apply)(CTulStringW&);
    const char* result;
    bool keepsBuffer; ///< of a string that owns its buffer alone
};

const Change kChanges[] = {
    {"append a text", [](CTulStringW& s) { s.Append(u"de"); }, "abcde", true},
    {"append beyond the capacity", [](CTulStringW& s) { s.Append(u"defgh"); }, "abcdefgh", false},
    {"append a unit", [](CTulStringW& s) { s += static_cast<unsigned short>(u'd'); }, "abcd", true},
    {"append nothing", [](CTulStringW& s) { s.Append(u""); }, "abc", true},
    {"append itself", [](CTulStringW& s) { s += s; }, "abcabc", true},
    {"append its own units", [](CTulStringW& s) { s.Append(s.view().substr(1)); }, "abcbc", true},
    {"append up to a 0 unit", [](CTulStringW& s) { s.Append(ToUnits(u"d\0e"), 3); }, "abcd", true},
    {"assign", [](CTulStringW& s) { s.Assign(u"xy"); }, "xy", true},
    {"assign its own tail", [](CTulStringW& s) { s.Assign(s.view().substr(1)); }, "bc", true},
    {"assign up to a 0 unit", [](CTulStringW& s) { s.Assign(ToUnits(u"x\0y"), 3); }, "x", true},
    {"assign itself", [](CTulStringW& s) { s = *&s; }, "abc", true},
    {"assign a text with a length", [](CTulStringW& s) { s.Assign(ToUnits(u"xyz"), 2); }, "xy", true},
    {"assign a null text", [](CTulStringW& s) { s.Assign(kNoUnits, 5); }, "", false},
    {"assign units", [](CTulStringW& s) { s = ToUnits(u"q"); }, "q", true},
    {"replace a unit", [](CTulStringW& s) { s.Replace(u'b', u'-'); }, "a-c", true},
    {"replace no unit", [](CTulStringW& s) { s.Replace(u'x', u'-'); }, "abc", true},
    {"replace a unit by 0", [](CTulStringW& s) { s.Replace(u'b', u'\0'); }, "abc", true},
    {"replace itself", [](CTulStringW& s) { s.Replace(s, u"xx"); }, "xx", true},
    {"replace by itself", [](CTulStringW& s) { s.Replace(u"b", s); }, "aabcc", true},
    {"format over itself", [](CTulStringW& s) { s.Format(u"%s+%s", s, s); }, "abc+abc", true},
};

TEST(String, ACopySharesTheBufferUntilEitherChanges) {
    for (const Change& change : kChanges) {
        SCOPED_TRACE(change.name);
        CTulStringW source(u"abc");
        CTulStringW copy(source);
        const unsigned short* const before = source.c_str();
        EXPECT_EQ(copy.c_str(), before);
        change.apply(copy);
        EXPECT_EQ(copy, change.result);
        EXPECT_EQ(source, "abc");
        EXPECT_EQ(copy.c_str() == before, copy == source);
        copy.Clear();
        change.apply(source); // in place while the buffer suffices
        EXPECT_EQ(source, change.result);
        EXPECT_EQ(source.c_str() == before, change.keepsBuffer);
        EXPECT_EQ(source.c_str()[source.GetLength()], 0);
    }
}

TEST(String, MovingLeavesAnEmptyStringOrTheOtherValue) {
    CTulStringW source(u"abc");
    const unsigned short* const units = source.c_str();
    CTulStringW target(std::move(source));
    EXPECT_EQ(target.c_str(), units);
    EXPECT_TRUE(source.IsEmpty()); // NOLINT(bugprone-use-after-move)
    CTulStringW other(u"x");
    other = std::move(target);
    EXPECT_EQ(other.c_str(), units);
}

TEST(String, ReplacesSubstringsFromLeftToRight) {
    constexpr struct {
        const char *text, *from, *to, *result;
    } kRows[] = {
        {"aaaa", "aa", "a", "aa"}, {"aaa", "aa", "b", "ba"},      {"a.b.c", ".", "::", "a::b::c"},
        {"abc", "abc", "", ""},    {"aXbX", "X", "XX", "aXXbXX"}, {"abc", "", "x", "abc"},
        {"", "a", "b", ""},        {"ab", "abc", "x", "ab"},      {"&<&", "&", "&amp;", "&amp;<&amp;"}};
    for (const auto& row : kRows) {
        CTulStringW text(row.text);
        EXPECT_TRUE(text.Replace(CTulStringW(row.from), CTulStringW(row.to)));
        EXPECT_EQ(text, row.result) << row.text << ' ' << row.from;
    }
}

TEST(String, PrefixSuffixAndMiddle) {
    const CTulStringW text(u"abcdef");
    const std::pair<CTulStringW, const char*> kRows[] = {
        {text.Left(2), "ab"},    {text.Right(2), "ef"}, {text.Mid(2), "cdef"}, {text.Mid(2, 2), "cd"},
        {text.Mid(4, 99), "ef"}, {text.Mid(99), ""},    {text.Left(0), ""}};
    for (const auto& [piece, expected] : kRows)
        EXPECT_EQ(piece, expected);
    EXPECT_EQ(text.Left(6).c_str(), text.c_str()) << "the whole is a shared copy";
    EXPECT_EQ(text.Right(99).c_str(), text.c_str());
}

template<typename... Arguments>
std::string Formatted(std::u16string_view format, const Arguments&... arguments) {
    CTulStringW text;
    EXPECT_TRUE(text.Format(format, arguments...));
    return text.utf8();
}

TEST(String, Formats) {
    EXPECT_EQ(Formatted(u"rId%d", 7), "rId7");
    EXPECT_EQ(Formatted(u"%s=%s;", u"a", CTulStringW(u"b")), "a=b;");
    EXPECT_EQ(Formatted(u"%05d|%-4d|%+d", -42, 7, 8), "-0042|7   |+8");
    EXPECT_EQ(Formatted(u"%u %x %X %o", -1, 255, 0xBEEFU, 8), "4294967295 ff BEEF 10");
    EXPECT_EQ(Formatted(u"%ld %llu %hu", -1L, ~0ULL, 65535), "-1 18446744073709551615 65535");
    EXPECT_EQ(Formatted(u"%.3f %5.1f|%g", 1.5, 2.25, 0.5), "1.500   2.2|0.5");
    EXPECT_EQ(Formatted(u"%-5s|%5s|%.2s", u"ab", u"cd", u"efg"), "ab   |   cd|ef");
    EXPECT_EQ(Formatted(u"%c%c 100%%", u'x', 65), "xA 100%");
    EXPECT_EQ(Formatted(u"[%s]", kNoUnits), "[]");
    EXPECT_EQ(Formatted(u"[%s|%d", u"only one"), "[only one|");
    EXPECT_EQ(Formatted(u"[%s] [%d] [%f]", 5, 5, 5), "[] [5] []")
        << "a conversion without a matching argument";
    EXPECT_EQ(Formatted(u"%04u-%02uT%02u.%03u", 2013, 5, 7, 9), "2013-05T07.009");
    EXPECT_EQ(Formatted(u"%s\u00E4\U0001F600", u"\u00F6"), "\xC3\xB6\xC3\xA4\xF0\x9F\x98\x80");
    CTulStringW kept(u"kept");
    EXPECT_FALSE(kept.Format(u"%n", 5));
    EXPECT_EQ(kept, "kept");
}

TEST(String, ComparesUnitsAsNumbers) {
    EXPECT_LT(CTulStringW(u"B"), CTulStringW(u"a"));
    EXPECT_LT(CTulStringW(u"a"), CTulStringW(u"aa"));
    EXPECT_LT(CTulStringW(u"\U0001F600"), CTulStringW(u"\uFFFD")) << "a surrogate lies below U+FFFD";
    EXPECT_EQ(CTulStringW(u"a"), ToUnits(u"a"));
    EXPECT_NE(CTulStringW(u"a"), std::u16string(u"A"));
}

TEST(String, TranslatesUtf8) {
    using namespace std::string_view_literals;
    const std::pair<std::string_view, std::u16string_view> kRows[] = {
        {"", u""},
        {"plain ascii, longer than eight bytes", u"plain ascii, longer than eight bytes"},
        {"\xC3\xA4", u"\u00E4"},
        {"12345678\xE2\x82\xAC", u"12345678\u20AC"},
        {"\xEF\xBF\xBF", u"\uFFFF"},
        {"\xF0\x9F\x98\x80z", u"\U0001F600z"},
        {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
        {"a\0b"sv, u"a\0b"sv},
        // Broken, each fault one character that is none.
        {"\x80", u"\uFFFD"},
        {"a\xFFz", u"a\uFFFDz"},
        {"\xC3", u"\uFFFD"},
        {"\xC3(", u"\uFFFD("},
        {"\xE2\x82", u"\uFFFD"},
        {"\xE2\x82z", u"\uFFFDz"},
        {"\xF0\x9F\x98", u"\uFFFD"},
        {"\xC0\x80", u"\uFFFD"},
        {"\xED\xA0\x80", u"\uFFFD"},
        {"\xF4\x90\x80\x80", u"\uFFFD"},
        {"1234567\xC3--", u"1234567\uFFFD--"}};
    for (const auto& [utf8, utf16] : kRows) {
        EXPECT_EQ(ODF::ToUtf16(utf8), utf16);
        const bool isWhole = utf16.find(u'\uFFFD') == std::u16string_view::npos;
        EXPECT_EQ(ODF::ToUtf8(utf16) == utf8, isWhole) << utf8;
        if (utf8.find('\0') == std::string_view::npos) {
            EXPECT_EQ(CTulStringW(utf8).view(), utf16);
        }
    }
    EXPECT_EQ(ODF::ToUtf8(std::u16string{u'a', 0xD83D, u'z'}), "a\xEF\xBF\xBDz");
    EXPECT_EQ(ODF::ToUtf8(std::u16string{0xDE00, 0xD83D, u'z', 0xDE00}),
              "\xEF\xBF\xBD\xEF\xBF\xBDz\xEF\xBF\xBD");
    EXPECT_EQ(ODF::ToUtf8(kNoUnits), "");
}

TEST(String, TranslatesEveryCodePointAtAnyPlace) {
    // Blocks of ASCII take another way than what comes between them.
    for (const char32_t c : {U'\x7F', U'\u0080', U'\u07FF', U'\u0800', U'\u0FFF', U'\u1000', U'\uCFFF',
                             U'\uD7FF', U'\uE000', U'\uFFFF', U'\U00010000', U'\U0010FFFF'})
        for (std::size_t before = 0; before < 40; ++before)
            for (const std::size_t after : {0U, 1U, 7U, 15U, 16U, 17U}) {
                std::u16string units(before, u'a');
                if (c > 0xFFFF)
                    units += {static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)),
                              static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF))};
                else
                    units += {static_cast<char16_t>(c), static_cast<char16_t>(c)};
                units.append(after, u'b');
                const std::string utf8 = ODF::ToUtf8(units);
                ASSERT_EQ(ODF::ToUtf16(utf8), units);
                ASSERT_EQ(ODF::ToUtf16(utf8 + "\xE2\x82"), units + u'\uFFFD');
            }
}

TEST(String, IsCopiedAFewTimesWhileItGrows) {
    CTulStringW grown;
    int buffers = 0;
    for (int i = 0; i < 1'000'000; ++i) {
        const std::size_t capacity = grown.GetCapacity();
        ASSERT_TRUE(grown.Append(u'x'));
        if (grown.GetCapacity() != capacity) ++buffers;
    }
    EXPECT_EQ(grown, std::u16string(1'000'000, u'x'));
    EXPECT_LT(buffers, 64);
    EXPECT_LE(grown.GetCapacity(), 1'600'000u) << "no more room than that is left over";
}

TEST(String, StringsThatShareABufferMayLiveOnDifferentThreads) {
    const CTulStringW shared(u"shared by all threads");
    const auto work = [copy = shared]() mutable {
        for (int i = 0; i < 20'000; ++i) {
            CTulStringW mine(copy);
            if (i % 3 == 0) mine.Append(u"!");
            if (i % 5 == 0) mine.Replace(u's', u'S');
            if (i % 7 == 0) copy = CTulStringW(copy);
        }
        EXPECT_EQ(copy, "shared by all threads");
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(work);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(shared, "shared by all threads");
}

} // namespace
