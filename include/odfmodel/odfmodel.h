#pragma once

/// @file
/// The whole interface of the library. For shorter compile times include single headers: documents from
/// odfmodel/document/, element classes by family from odfmodel/elements/.
///
///     ODF::Document document;
///     if (const ODF::Result opened = document.Open("report.odt"); !opened) {
///         std::cerr << opened.Text() << '\n';
///         return 1;
///     }
///     if (const CSDObject* text = document.Text())
///         for (const ODF::CTextH& heading : text->Descendants<ODF::CTextH>())
///             std::cout << heading.TextOutlineLevel().value_or(1) << ' ' << ODF::Text(heading) << '\n';
///
/// - Documents: `ODF::Document` (document/open_document.h) keeps all that a file has. `CODFDoc` is the older
/// class.
/// - Elements: `text:list-item` is `ODF::CTextListItem`, and so on; all derive from `CSDObject`
/// (core/object.h).
/// - Above the trees: text (document/text.h), `Styles`, `Sheet`, pictures, `Transfer`, fields, whole texts.
/// - Values: `Length`, `Color`, `DateTime`, `Duration`, `KeyOf` and `ParseKey` for enumerations.

#include <odfmodel/core/attribute.h>
#include <odfmodel/core/color.h>
#include <odfmodel/core/diagnostics.h>
#include <odfmodel/core/enumeration.h>
#include <odfmodel/core/fidelity.h>
#include <odfmodel/core/foreign.h>
#include <odfmodel/core/format_version.h>
#include <odfmodel/core/iso_time.h>
#include <odfmodel/core/length.h>
#include <odfmodel/core/limits.h>
#include <odfmodel/core/object.h>
#include <odfmodel/core/part.h>
#include <odfmodel/core/progress.h>
#include <odfmodel/core/ranges.h>
#include <odfmodel/core/reflection.h>
#include <odfmodel/core/serializer.h>
#include <odfmodel/core/string.h>
#include <odfmodel/core/value_objects.h>
#include <odfmodel/core/whole_value.h>
#include <odfmodel/document/cell_value.h>
#include <odfmodel/document/document.h>
#include <odfmodel/document/document_text.h>
#include <odfmodel/document/fields.h>
#include <odfmodel/document/flat.h>
#include <odfmodel/document/format_use.h>
#include <odfmodel/document/odf_document.h>
#include <odfmodel/document/open_document.h>
#include <odfmodel/document/part.h>
#include <odfmodel/document/part_factories.h>
#include <odfmodel/document/pictures.h>
#include <odfmodel/document/sheet.h>
#include <odfmodel/document/styles.h>
#include <odfmodel/document/text.h>
#include <odfmodel/document/transfer.h>
#include <odfmodel/elements/elements.h>
#include <odfmodel/package/package.h>
#include <odfmodel/serial/base_library.h>
#include <odfmodel/serial/default_handler.h>
#include <odfmodel/serial/sax_reader.h>
#include <odfmodel/serial/unzip.h>
#include <odfmodel/serial/zip.h>
#include <odfmodel/version.h>
