#include "package/open/member_reader.h"

#include <odfmodel/serial/default_handler.h>

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

namespace SDPackage {

namespace {

constexpr std::size_t kChunk = 1024;
constexpr std::size_t kCallbackChunk = 10'240;
constexpr std::size_t kCallbackBuffer = 40'960;

/// Calls `receive` with each piece of the member. False when the member ends early or `receive` ends it.
template<typename Receive>
bool ForEachPiece(CSDUnZip& unzip, const CTulStringW& itemName, unsigned char* buffer, std::size_t capacity,
                  Receive receive) {
    long size = 0;
    int extra = 0;
    if (unzip.GetItemSize(itemName, size, extra) == 0) return false;
    long total = 0;
    int cursor = 0;
    int byteCount = 0;
    while (unzip.Decompress(itemName, buffer, static_cast<int>(capacity), cursor, byteCount) != 0) {
        if (byteCount <= 0) continue;
        total += byteCount;
        if (!receive(static_cast<std::size_t>(byteCount), cursor)) return false;
    }
    return total >= size;
}

/// The member's bytes in a buffer that grows; nothing when it can't be read, or not passed as one piece.
std::optional<ByteVector> ReadWhole(CSDUnZip& unzip, const CTulStringW& itemName) {
    ByteVector bytes(kCallbackBuffer);
    std::size_t used = 0;
    std::array<unsigned char, kCallbackChunk> piece{};
    const bool isWhole =
        ForEachPiece(unzip, itemName, piece.data(), piece.size(), [&](std::size_t count, int /*cursor*/) {
            if (bytes.size() - used < count) bytes.resize(bytes.size() * 4);
            std::copy_n(piece.begin(), count, bytes.begin() + static_cast<std::ptrdiff_t>(used));
            used += count;
            return used <= static_cast<std::size_t>(std::numeric_limits<int>::max());
        });
    if (!isWhole) return std::nullopt;
    bytes.resize(used);
    return bytes;
}

/// Hands elements on and notices whether the document has come to its end: ending a parse in chunks doesn't
/// tell.
class WholeDocument final : public CSDDefaultHandler {
public:
    explicit WholeDocument(CSDDefaultHandler& handler) : handler_(handler) {}

    void startElement(const unsigned short* uri, const unsigned short* localName, const unsigned short* qName,
                      CSDAttribute* attributes) override {
        handler_.startElement(uri, localName, qName, attributes);
    }
    void endDocument() override { isWhole_ = true; }
    bool isWhole() const noexcept { return isWhole_; }

private:
    CSDDefaultHandler& handler_;
    bool isWhole_ = false;
};

} // namespace

IndexReader::IndexReader(const PackageState& state) : state_(state), reader_(CreateSaxReader()) {
    reader_->SetLimits(state.limits);
}

IndexReader::~IndexReader() = default;

void IndexReader::install(const CTulStringW& itemName, CSDDefaultHandler& handler) {
    reader_->SetDiagnostics(state_.diagnostics, MemberName(itemName.view()));
    reader_->SetContentHandler(&handler);
}

int IndexReader::readFile(const CTulStringW& itemName) {
    return reader_->ParseWithHandler(state_.storage.pathOf(itemName.view()).text()) ? 1 : 0;
}

int IndexReader::readMember(const CTulStringW& itemName, CSDDefaultHandler& handler, bool isSeen) {
    CSDUnZip* const unzip = state_.unzip.get();
    if (!unzip) return 0;
    if (unzip->GetItemIndex(itemName) < 0) {
        state_.note(ODF::NoteCode::MemberMissing, ODF::Severity::Warning, MemberName(itemName.view()),
                    "the archive has no such member");
        return 0;
    }
    if (isSeen && state_.xmlCallback) {
        std::optional<ByteVector> bytes = ReadWhole(*unzip, itemName);
        if (bytes && state_.xmlCallback(bytes->data(), static_cast<int>(bytes->size()), ToUnits(u"XMLFile"),
                                        itemName) == 0)
            return 0;
    }
    WholeDocument document(handler);
    reader_->SetContentHandler(&document);
    if (!reader_->BeginChunks()) return 1;
    std::array<unsigned char, kChunk> buffer{};
    bool isEmpty = true;
    const bool isRead =
        ForEachPiece(*unzip, itemName, buffer.data(), buffer.size(), [&](std::size_t count, int cursor) {
            isEmpty = false;
            return reader_->ParseChunk(buffer.data(), static_cast<int>(count), cursor);
        });
    reader_->EndChunks();
    reader_->SetContentHandler(nullptr);
    return isRead && (isEmpty || document.isWhole()) ? 1 : 0;
}

CTulStringW IndexReader::spelled(const CTulStringW& itemName) const {
    if (!state_.unzip || !state_.unzip->itemTable || state_.unzip->GetItemIndex(itemName) >= 0)
        return itemName;
    for (const auto& [name, item] : *state_.unzip->itemTable)
        if (item.index >= 0 &&
            EqualIgnoringCase(WithoutLeadingSeparator(name.view()), WithoutLeadingSeparator(itemName.view())))
            return name;
    return itemName;
}

int IndexReader::read(const CTulStringW& itemName, CSDDefaultHandler& handler) {
    install(itemName, handler);
    if (state_.keepsFile() && !IsOdf(state_.documentType))
        return readMember(spelled(itemName), handler, state_.keepCompressed != 0);
    return state_.keepCompressed != 0 ? readMember(itemName, handler) : readFile(itemName);
}

int IndexReader::readUnseen(const CTulStringW& itemName, CSDDefaultHandler& handler) {
    install(itemName, handler);
    if (state_.keepsFile()) return readMember(spelled(itemName), handler, false);
    if (state_.keepCompressed == 0) return readFile(itemName);
    return state_.unzip && reader_->ParseItem(itemName, state_.unzip.get()) ? 1 : 0;
}

int ReadFromArchive(const PackageState& state, const CTulStringW& itemName, CSDDefaultHandler& handler) {
    IndexReader reader(state);
    reader.install(itemName, handler);
    return reader.readMember(state.keepsFile() ? reader.spelled(itemName) : itemName, handler);
}

} // namespace SDPackage
