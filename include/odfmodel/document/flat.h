#pragma once

#include <odfmodel/document/open_document.h>
#include <odfmodel/export.h>

/// @file
/// A document as a package and as one XML file.
///
///     ODF::Document flat;
///     if (ODF::ToFlat(document, flat)) flat.Save("report.fodt");

namespace ODF {

/// Makes `flat` the document as one XML file, a `Document` for which `IsFlat` is true; `document` stays as it
/// is. Pictures and embedded objects come into the XML. Automatic styles of `styles.xml` whose name another
/// style of the content has get a new one. What has no place in one file is left out, and a note tells each
/// such member: a warning for macros and other content, an information for thumbnails and the like.
///
/// `flat` stays what it was, and the status tells, when the document is closed or flat (`NothingToSave`), is
/// a formula or another document without a body (`UnknownType`), has been read in part only (`Damaged`), or
/// would take more than the limits allow (`LimitExceeded`): objects and pictures come once for each place
/// that shows them.
ODFMODEL_API Result ToFlat(Document& document, Document& flat);

/// The other way: `package` gets the members content.xml, styles.xml, meta.xml and settings.xml as far as the
/// document has what is in them, the pictures, and the embedded objects. An automatic style comes into the
/// member that uses it, or into both. `NothingToSave` for a document that is closed or no flat one.
ODFMODEL_API Result ToPackage(Document& flat, Document& package);

} // namespace ODF
