#pragma once

#include <odfmodel/core/length.h>
#include <odfmodel/core/object.h>
#include <odfmodel/elements/enumerations.h>
#include <odfmodel/export.h>

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace ODF {

class CDrawFrame;
class CODFDoc;
class Document;
class Result;

/// How a picture is placed.
struct PictureOptions {
    /// Of two sizes the missing one follows from the shape of the picture, and without any the picture has
    /// the size that its file tells (PNG, JPEG, GIF). Where that isn't known, a missing size stays away.
    std::optional<Length> width{};
    std::optional<Length> height{};
    /// On a slide or drawing page, from its upper left corner.
    std::optional<Length> x{};
    std::optional<Length> y{};
    /// In a text: moves with the text like a letter, or hangs on the paragraph, or ...
    ST_TextAnchorType anchor = ST_TextAnchorType::AsChar;
    std::string name{};        ///< UTF-8
    std::string description{}; ///< UTF-8, for people who can't see it
};

/// Puts the picture of a file into a document: the file becomes a member, and `place`, which is in that
/// document, gets a frame with the picture as its last child. `place` is a paragraph, heading, span, cell,
/// slide, drawing page or group, or the body of a text. Returns the frame, borrowed. Null, with nothing
/// changed, when the file can't be read or `place` can't hold a frame; `result`, if given, tells why. A flat
/// document gets the picture's bytes in its tree.
ODFMODEL_API CDrawFrame* PlacePicture(Document& document, CSDObject& place, const std::filesystem::path& file,
                                      const PictureOptions& options = {}, Result* result = nullptr);
/// The same with the bytes of a picture, as a member with a name like `fileName`.
ODFMODEL_API CDrawFrame* PlacePicture(Document& document, CSDObject& place,
                                      std::span<const unsigned char> bytes, std::string_view fileName,
                                      const PictureOptions& options = {});
/// The same for a document in a folder: see `AddPictureFile`. The file must be there until the save.
ODFMODEL_API CDrawFrame* PlacePicture(CODFDoc& document, CSDObject& place, const std::filesystem::path& file,
                                      const PictureOptions& options = {});

/// Puts an embedded document, such as a chart, into a frame at `place`: its members become an object of
/// `document`, as `Document::AddObject` does. Null, with nothing changed, when that can't be done.
ODFMODEL_API CDrawFrame* PlaceObject(Document& document, CSDObject& place, Document& object,
                                     const PictureOptions& options = {});

} // namespace ODF
