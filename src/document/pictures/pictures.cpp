#include <odfmodel/document/pictures.h>

#include "core/object_access.h"
#include "document/links.h"
#include "document/pictures/image_size.h"
#include "platform/files.h"
#include "serial/crypto/base64.h"

#include <odfmodel/document/odf_document.h>
#include <odfmodel/document/open_document.h>
#include <odfmodel/document/part_factories.h>
#include <odfmodel/document/text.h>
#include <odfmodel/elements/draw/frames.h>
#include <odfmodel/elements/draw/resources.h>
#include <odfmodel/elements/office/document.h>
#include <odfmodel/elements/text/paragraph.h>

#include <cmath>
#include <memory>
#include <utility>
#include <vector>

namespace ODF {
namespace {

using ByteSpan = std::span<const unsigned char>;

bool IsInText(const CSDObject& place) noexcept {
    const unsigned id = place.GetID();
    return id == CTextP::kId || id == CTextH::kId || id == CTextSpan::kId || id == CTextA::kId;
}

/// With as many digits as a printer needs.
Length Rounded(double centimeters) noexcept {
    constexpr double kSteps = 1000;
    return Length::Centimeters(std::round(centimeters * kSteps) / kSteps);
}

void SetSize(CDrawFrame& frame, const PictureOptions& options, const std::optional<ImageSize>& natural) {
    std::optional<Length> width = options.width;
    std::optional<Length> height = options.height;
    if (natural && !width && !height) {
        width = Rounded(natural->width);
        height = Rounded(natural->height);
    } else if (natural && !height) {
        if (const auto size = width->In(LengthUnit::Centimeter))
            height = Rounded(*size * natural->height / natural->width);
    } else if (natural && !width) {
        if (const auto size = height->In(LengthUnit::Centimeter))
            width = Rounded(*size * natural->width / natural->height);
    }
    if (width) frame.SetSvgWidth(*width);
    if (height) frame.SetSvgHeight(*height);
}

/// A frame for `place` without its content.
std::unique_ptr<CDrawFrame> MakeFrame(const CSDObject& place, const PictureOptions& options,
                                      const std::optional<ImageSize>& natural) {
    std::unique_ptr<CDrawFrame> frame(static_cast<CDrawFrame*>(CDrawFrame::Create()));
    if (!options.name.empty()) frame->SetDrawName(options.name);
    SetSize(*frame, options, natural);
    if (options.x) frame->SetSvgX(*options.x);
    if (options.y) frame->SetSvgY(*options.y);
    if (place.GetID() == COfficeText::kId) {
        frame->SetTextAnchorType(ST_TextAnchorType::Page);
        frame->SetTextAnchorPageNumber(1);
    } else if (IsInText(place)) {
        frame->SetTextAnchorType(options.anchor);
    }
    return frame;
}

/// Puts the frame where it belongs, with the description after its content.
CDrawFrame* Finish(CSDObject& place, std::unique_ptr<CDrawFrame> frame, const PictureOptions& options) {
    if (!options.description.empty()) SetText(frame->Append<CSvgDesc>(), options.description);
    CDrawFrame* const made = frame.get();
    return place.Append(std::move(frame)) == TreeChange::Done ? made : nullptr;
}

CDrawFrame* Place(Document& document, CSDObject& place, ByteSpan bytes, std::string_view fileName,
                  const PictureOptions& options) {
    if (!ObjectAccess::isExtended(place)) return nullptr;
    std::unique_ptr<CDrawFrame> frame = MakeFrame(place, options, SizeOfImage(bytes));
    auto& image = frame->Append<CDrawImage>();
    if (document.IsFlat()) {
        image.Append<COfficeBinaryData>().Setval(crypto::ToBase64(bytes));
    } else {
        const std::string member = document.AddPicture(bytes, fileName);
        if (member.empty()) return nullptr;
        SetLink(image, member);
    }
    return Finish(place, std::move(frame), options);
}

} // namespace

CDrawFrame* PlacePicture(Document& document, CSDObject& place, ByteSpan bytes, std::string_view fileName,
                         const PictureOptions& options) {
    return document.IsOpen() ? Place(document, place, bytes, fileName, options) : nullptr;
}

CDrawFrame* PlacePicture(Document& document, CSDObject& place, const std::filesystem::path& file,
                         const PictureOptions& options, Result* result) {
    const platform::Path path(CTulStringW{file});
    const auto bytes = platform::ReadFile(path);
    CDrawFrame* frame = nullptr;
    Status status = Status::NotReadable;
    std::vector<Note> notes;
    if (bytes) {
        frame = PlacePicture(document, place, *bytes, path.name(), options);
        if (!frame) status = Status::CouldNotWrite;
    }
    if (!frame) {
        Diagnostics diagnostics;
        diagnostics.add(NoteCode::General, Severity::Error, path.name(),
                        bytes ? "there is no place for the picture" : platform::LastFault());
        notes = diagnostics.notes();
    }
    if (result) *result = Result(frame ? Status::Ok : status, std::move(notes));
    return frame;
}

CDrawFrame* PlacePicture(CODFDoc& document, CSDObject& place, const std::filesystem::path& file,
                         const PictureOptions& options) {
    if (!ObjectAccess::isExtended(place) || !document.GetRootPart()) return nullptr;
    const CTulStringW path(file);
    const auto bytes = platform::ReadFile(platform::Path(path));
    if (!bytes) return nullptr;
    const CODFPart* const part = AddPictureFile(document.GetRootPart(), path);
    if (!part) return nullptr;
    std::unique_ptr<CDrawFrame> frame = MakeFrame(place, options, SizeOfImage(*bytes));
    SetLink(frame->Append<CDrawImage>(), ToUtf8(part->GetPackagePath()));
    return Finish(place, std::move(frame), options);
}

CDrawFrame* PlaceObject(Document& document, CSDObject& place, Document& object,
                        const PictureOptions& options) {
    if (!ObjectAccess::isExtended(place)) return nullptr;
    std::unique_ptr<CDrawFrame> frame = MakeFrame(place, options, {});
    const std::string folder = document.AddObject(object);
    if (folder.empty()) return nullptr;
    SetLink(frame->Append<CDrawObject>(), "./" + folder);
    return Finish(place, std::move(frame), options);
}

} // namespace ODF
