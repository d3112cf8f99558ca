#pragma once

#include <odfmodel/document/part.h>

// Parts that a caller adds to a document. A part reaches the saved package when it is a direct child of the
// document's root part; it then belongs to the document.

namespace ODF {

/// A binary part "Pictures/<file name>" for the picture file at `path`, added to `parent`; the file itself is
/// read when the document is saved. A file that `parent` holds already, its path compared ignoring case,
/// isn't added again: its part is the result. Borrowed.
ODFMODEL_API CODFPart* _CreateImagePart(CODFPart* parent, CTulStringW path, int = 0, int = 0);
/// The same for a sound or film, as "media/<file name>".
ODFMODEL_API CODFPart* _CreateMediaPart(CODFPart* parent, CTulStringW path, int = 0, int = 0);
/// As `_CreateImagePart`, but null when there is no file at `path` that can be read, and with a name of its
/// own where `parent` has another picture of that file name: "Pictures/logo-2.png".
ODFMODEL_API CODFPart* AddPictureFile(CODFPart* parent, const CTulStringW& path);
/// The same for a sound or film.
ODFMODEL_API CODFPart* AddMediaFile(CODFPart* parent, const CTulStringW& path);
/// A part "<directory>content.xml" with a new `office:document-content`, for a chart. `directory` brings its
/// separator. It is not added to `parent`: the caller owns it until it has added it to the root part.
ODFMODEL_API CODFPart* _CreateChartContentRootPart(CODFPart* parent, const unsigned short* directory);
/// A part "<directory>styles.xml" with a new `office:document-styles`, added to `parent`.
ODFMODEL_API CODFPart* _CreateChartStyleRootPart(CODFPart* parent, const unsigned short* directory);

inline CODFPart* _CreateChartContentRootPart(CODFPart* parent, const SDPackage::PlainText auto& directory) {
    return _CreateChartContentRootPart(parent, CTulStringW(directory).c_str());
}
inline CODFPart* _CreateChartStyleRootPart(CODFPart* parent, const SDPackage::PlainText auto& directory) {
    return _CreateChartStyleRootPart(parent, CTulStringW(directory).c_str());
}

} // namespace ODF

/// Key of `ODFUtil::GetMediaType`.
enum ODF_MedType : int {
    ODF_MedTypeContent = 0,
    ODF_MedTypeStyles = 2,
    ODF_MedTypeMeta = 3,
    ODF_MedTypeSettings = 4,
};

namespace ODFUtil {

/// The fixed name of a main part, such as "content.xml"; null for any other key.
ODFMODEL_API const unsigned short* GetMediaType(ODF_MedType type);

} // namespace ODFUtil
