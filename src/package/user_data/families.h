#pragma once

#include "package/paths.h"

namespace SDPackage {

inline constexpr Units kUserDataType = u"application/vnd.tul-userdata.dat";

/// One family of documents whose main part has a form of the user data module. Names of members, without a
/// leading `/`.
struct UserFamily {
    int types[3]; ///< document types whose user data member is `dataItem`; -1 is none
    Units mainPart;
    Units relationshipsItem; ///< the links of the main part
    Units dataItem;
    Units contentType; ///< of the main part in the user form
};

inline constexpr UserFamily kUserFamilies[] = {
    {{0x1000001, 0x1000010, 0x1000040},
     u"ppt/presentation.xml",
     u"ppt/_rels/presentation.xml.rels",
     u"ppt/UserData.dat",
     u"application/vnd.tul-officedocument.presentationml.presentation.main+xml"},
    {{0x1000020, 0x1000041, -1},
     u"xl/workbook.xml",
     u"xl/_rels/workbook.xml.rels",
     u"xl/UserData.dat",
     u"application/vnd.tul-officedocument.spreadsheetml.sheet.main+xml"},
    {{0x1000030, 0x1000042, -1},
     u"word/document.xml",
     u"word/_rels/document.xml.rels",
     u"word/UserData.dat",
     u"application/vnd.tul-officedocument.wordprocessingml.document.main+xml"},
};

/// A member's name as the registry has it.
inline CTulStringW PartNameOf(Units item) {
    std::u16string name(u"/");
    name += item;
    return name;
}

} // namespace SDPackage
