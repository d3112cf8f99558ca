#pragma once

/// @file
/// The whole interface of the library. Whoever wants shorter compile times includes single headers: documents
/// from odfmodel/document/, element classes by family from odfmodel/elements/.

#include <odfmodel/core/attribute.h>
#include <odfmodel/core/color.h>
#include <odfmodel/core/diagnostics.h>
#include <odfmodel/core/enumeration.h>
#include <odfmodel/core/fidelity.h>
#include <odfmodel/core/foreign.h>
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
#include <odfmodel/document/cell_value.h>
#include <odfmodel/document/document.h>
#include <odfmodel/document/document_text.h>
#include <odfmodel/document/fields.h>
#include <odfmodel/document/flat.h>
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
