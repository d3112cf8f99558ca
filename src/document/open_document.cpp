#include <odfmodel/document/open_document.h>

#include "document/document_kinds.h"
#include "document/guarded.h"
#include "document/pictures/member_store.h"
#include "document/templates.h"
#include "document/tree.h"
#include "package/odf/odf_package.h"
#include "package/odf/whole_file.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/elements/elements.h>

#include <algorithm>
#include <exception>
#include <istream>
#include <map>
#include <new>
#include <ostream>
#include <stdexcept>

namespace ODF {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::string_view kContent = "content.xml";
constexpr std::string_view kStyles = "styles.xml";
constexpr std::string_view kMeta = "meta.xml";
constexpr std::string_view kSettings = "settings.xml";
/// The one tree of a flat document, which has no name.
constexpr std::string_view kFlat;

platform::Path ToPath(const std::filesystem::path& path) {
    const std::u8string utf8 = path.u8string();
    return platform::Path(std::string(utf8.begin(), utf8.end()));
}

/// Runs `work(diagnostics)`, which returns a status. A failed allocation is one too.
template<typename Work>
Result Run(Work work) {
    return Guarded([&] {
        Diagnostics diagnostics;
        const Status status = work(diagnostics);
        return Result(status, diagnostics.notes());
    });
}

/// Whether the bytes begin like XML: with markup, perhaps after a byte order mark and blanks.
bool LooksLikeXml(std::span<const unsigned char> bytes) noexcept {
    constexpr unsigned char kMark[] = {0xEF, 0xBB, 0xBF};
    if (bytes.size() >= 3 && std::equal(std::begin(kMark), std::end(kMark), bytes.begin()))
        bytes = bytes.subspan(3);
    else if (bytes.size() >= 2 &&
             ((bytes[0] == 0xFE && bytes[1] == 0xFF) || (bytes[0] == 0xFF && bytes[1] == 0xFE)))
        return true; // UTF-16
    const auto at = std::find_if(bytes.begin(), bytes.end(), [](unsigned char c) {
        return c != ' ' && c != '\t' && c != '\r' && c != '\n';
    });
    return at != bytes.end() && *at == '<';
}

template<typename T>
T* As(CSDObject* object) noexcept {
    return object && object->GetID() == T::kId ? static_cast<T*>(object) : nullptr;
}

template<typename T>
T* ChildOf(CSDObject* object) noexcept {
    return object ? static_cast<T*>(object->GetObjectByID(T::kId)) : nullptr;
}

/// Whether other programs may read something else in the archive; then an error says what.
bool IsAmbiguous(Diagnostics& diagnostics) {
    const std::vector<Note>& notes = diagnostics.notes();
    const auto found = std::find_if(notes.begin(), notes.end(), [](const Note& note) {
        return note.code == NoteCode::Ambiguous || note.code == NoteCode::MemberDuplicate;
    });
    if (found == notes.end()) return false;
    Note error = *found;
    error.severity = Severity::Error;
    diagnostics.add(std::move(error));
    return true;
}

/// The caller's callback on its way through the work, which lets no exception pass.
class Asking {
public:
    explicit Asking(const ProgressCallback& callback) : callback_(callback) {}
    /// Empty for a callback that is.
    ProgressCallback guarded() {
        if (!callback_) return {};
        return [this](const Progress& progress) noexcept { return ask(progress); };
    }
    /// Lets out what the callback has thrown.
    void rethrow() const {
        if (thrown_) std::rethrow_exception(thrown_);
    }

private:
    bool ask(const Progress& progress) noexcept {
        if (isEnded_) return false; // it isn't asked again
        try {
            isEnded_ = !callback_(progress);
        } catch (...) {
            thrown_ = std::current_exception();
            isEnded_ = true;
        }
        return !isEnded_;
    }

    const ProgressCallback& callback_;
    std::exception_ptr thrown_;
    bool isEnded_ = false;
};

/// As `Run`, for work that asks the caller whether to go on: `work(diagnostics, progress)`.
template<typename Work>
Result RunAsking(const ProgressCallback& callback, Work work) {
    Asking asking(callback);
    Result result = Run([&](Diagnostics& diagnostics) { return work(diagnostics, asking.guarded()); });
    asking.rethrow();
    return result;
}

} // namespace

std::string Result::Text() const {
    std::string text = ToText(status_);
    if (status_ == Status::Ok) return text;
    const auto cause = std::find_if(notes_.begin(), notes_.end(),
                                    [](const Note& note) { return note.severity == Severity::Error; });
    if (cause == notes_.end()) return text;
    text += ": ";
    if (!cause->member.empty()) text += cause->member + ": ";
    text += cause->text;
    if (cause->line > 0)
        text += " (line " + std::to_string(cause->line) + ", column " + std::to_string(cause->column) + ")";
    return text;
}

struct Document::State {
    OdfPackage package;
    bool isFlat = false;
    Limits limits;
    Limits left; ///< the same, but what the trees have had of the bounds on all of them is taken off
    KindOfDocument kind;
    std::map<std::string, Tree, std::less<>> trees;

    /// The tree of a member, read if it isn't there yet; null when there is none.
    Tree* tree(std::string_view member, Diagnostics& diagnostics, Status* status = nullptr,
               const ProgressCallback& progress = {});
    /// As `tree`, for the getters, which tell nothing.
    CSDObject* root(std::string_view member);
    Status openPackage(Bytes bytes, const OpenOptions& options, Diagnostics& diagnostics,
                       const ProgressCallback& progress);
    Status openFlat(std::span<const unsigned char> bytes, Diagnostics& diagnostics,
                    const ProgressCallback& progress);
    Status readMainTrees(Diagnostics& diagnostics, const ProgressCallback& progress);
    bool isWhole() const noexcept;
    /// Writes a tree; one that its caller has given what a later version brought says so in its version.
    bool writeTree(std::string_view member, Tree& tree, Bytes& bytes, Diagnostics& diagnostics);
    COfficeBody* body();
    /// The kind, by what is in the body.
    DocumentKind kindOfBody();
    Status write(const SaveOptions& options, Bytes& bytes, Diagnostics& diagnostics,
                 const ProgressCallback& progress);
    bool hasSignature() const;
    bool isUnchanged(std::string_view member, const Bytes& written, Diagnostics& diagnostics);
};

Tree* Document::State::tree(std::string_view member, Diagnostics& diagnostics, Status* status,
                            const ProgressCallback& progress) {
    if (const auto at = trees.find(member); at != trees.end()) {
        if (status) *status = at->second.status;
        return &at->second;
    }
    if (status) *status = Status::NotReadable;
    if (isFlat || !package.contains(member)) return nullptr;
    Bytes bytes;
    const Status read = package.read(member, bytes, diagnostics, progress);
    if (read == Status::Cancelled) {
        if (status) *status = read;
        return nullptr;
    }
    Tree tree = ReadTree(bytes, member, left, diagnostics);
    Spend(left, tree.cost);
    if (read != Status::Ok) tree.status = read == Status::NotReadable ? Status::Damaged : read;
    if (status) *status = tree.status;
    // Without a root the member stays what it is: bytes.
    return tree.root ? &trees.emplace(member, std::move(tree)).first->second : nullptr;
}

CSDObject* Document::State::root(std::string_view member) {
    Diagnostics ignored;
    const Tree* const found = tree(member, ignored);
    return found ? found->root.get() : nullptr;
}

bool Document::State::isWhole() const noexcept {
    return std::all_of(trees.begin(), trees.end(),
                       [](const auto& tree) { return tree.second.status == Status::Ok; });
}

COfficeBody* Document::State::body() {
    return ChildOf<COfficeBody>(root(isFlat ? kFlat : kContent));
}

DocumentKind Document::State::kindOfBody() {
    if (!isFlat && As<CMathMath>(root(kContent))) return DocumentKind::Formula;
    const COfficeBody* const found = body();
    const std::vector<CSDObject*>* const children = found ? found->GetObjectList() : nullptr;
    if (!children) return DocumentKind::Unknown;
    for (const CSDObject* const child : *children)
        if (const auto info = child ? ClassOf(*child) : std::nullopt)
            if (const DocumentKind told = KindOfBody(info->elementName()); told != DocumentKind::Unknown)
                return told;
    return DocumentKind::Unknown;
}

Status Document::State::openPackage(Bytes bytes, const OpenOptions& options, Diagnostics& diagnostics,
                                    const ProgressCallback& progress) {
    left = SharedLimits(limits, bytes.size());
    if (const Status status = package.open(std::move(bytes), options.password, limits, diagnostics, progress);
        status != Status::Ok)
        return status;
    if (options.refusesAmbiguous && IsAmbiguous(diagnostics)) return Status::Ambiguous;
    kind = ToKind(package.mediaType());
    if (!package.contains(kContent)) {
        const bool isOurs = kind.kind != DocumentKind::Unknown;
        diagnostics.add(NoteCode::MemberMissing, Severity::Error, kContent,
                        isOurs ? "the package has no content" : "this is no OpenDocument package");
        return isOurs ? Status::NoContent : Status::UnknownType;
    }
    return readMainTrees(diagnostics, progress);
}

Status Document::State::readMainTrees(Diagnostics& diagnostics, const ProgressCallback& progress) {
    constexpr std::string_view kMain[] = {kContent, kStyles, kMeta, kSettings};
    std::uint64_t done = 0;
    std::uint64_t total = 0;
    for (const std::string_view member : kMain)
        total += package.sizeOf(member);
    ProgressCallback ofMember; // turns the progress of one member into that of all four
    if (progress)
        ofMember = [&](Progress state) {
            state.done = done + std::min(state.done, state.total) / 2; // its tree is the other half
            state.total = total;
            return progress(state);
        };
    Status status = Status::Ok;
    for (const std::string_view member : kMain) {
        if (!package.contains(member)) continue;
        Status read = Status::Ok;
        tree(member, diagnostics, &read, ofMember);
        if (read == Status::Cancelled) return read;
        done += package.sizeOf(member);
        if (progress && !progress({Progress::Step::Reading, member, done, total})) return Status::Cancelled;
        if (status == Status::Ok) status = read;
    }
    if (kind.kind == DocumentKind::Unknown) kind.kind = kindOfBody();
    if (kind.kind == DocumentKind::Unknown && status == Status::Ok && !root(kContent)) {
        diagnostics.add(NoteCode::General, Severity::Error, kContent, "the content is of another format");
        return Status::UnknownType;
    }
    return status;
}

Status Document::State::openFlat(std::span<const unsigned char> bytes, Diagnostics& diagnostics,
                                 const ProgressCallback& progress) {
    isFlat = true;
    if (bytes.size() > limits.partBytes) {
        diagnostics.add(NoteCode::SizeLimit, Severity::Error, {}, "the file is too large");
        return Status::LimitExceeded;
    }
    if (progress && !progress({Progress::Step::Reading, {}, 0, bytes.size()})) return Status::Cancelled;
    Tree read = ReadTree(bytes, {}, limits, diagnostics);
    if (progress && !progress({Progress::Step::Reading, {}, bytes.size(), bytes.size()}))
        return Status::Cancelled;
    auto* const flat = As<COfficeDocument>(read.root.get());
    if (!flat) {
        diagnostics.add(NoteCode::General, Severity::Error, {},
                        "the file is neither a package nor a flat XML document");
        return read.status == Status::Ok ? Status::UnknownType : read.status;
    }
    const Status status = read.status;
    trees.emplace(kFlat, std::move(read));
    CTulStringW mediaType;
    if (GetAttributeText(*flat, "office:mimetype", mediaType)) kind = ToKind(mediaType.utf8());
    if (kind.kind == DocumentKind::Unknown) kind.kind = kindOfBody();
    return status;
}

bool Document::State::hasSignature() const {
    const std::vector<std::string> names = package.names();
    return std::any_of(names.begin(), names.end(), [](const std::string& name) {
        return name.starts_with("META-INF/") && name.find("signatures") != std::string::npos;
    });
}

/// Whether a tree still says what its member in the package does: read and written again, that gives the
/// same.
bool Document::State::isUnchanged(std::string_view member, const Bytes& written, Diagnostics& diagnostics) {
    Bytes original;
    if (package.read(member, original, diagnostics) != Status::Ok) return false;
    const Tree read = ReadTree(original, member, limits, diagnostics);
    Bytes again;
    return read.status == Status::Ok && read.root && WriteTree(*read.root, again) && again == written;
}

bool Document::State::writeTree(std::string_view member, Tree& tree, Bytes& bytes, Diagnostics& diagnostics) {
    const std::size_t start = bytes.size();
    FormatVersion needed = FormatVersion::Base;
    if (!WriteTree(*tree.root, bytes, &needed)) return false;
    const auto told = ParseVersion(AttributeOf(*tree.root, "office:version"));
    if (!told || needed <= *told) return true; // what tells no version isn't given one
    // A file may have had more than it says; that is its own affair.
    Bytes original;
    if (!isFlat && package.read(member, original, diagnostics) == Status::Ok && !original.empty()) {
        const Tree read = ReadTree(original, member, limits, diagnostics);
        FormatVersion had = FormatVersion::Base;
        Bytes again;
        if (read.root && WriteTree(*read.root, again, &had) && had >= needed) return true;
    }
    SetAttributeText(*tree.root, "office:version", VersionName(needed));
    const auto ofPackage = ParseVersion(package.version());
    const bool isOwn = !isFlat && member.find('/') == std::string_view::npos; // not of an embedded object
    if (isOwn && (!ofPackage || *ofPackage < needed)) package.setVersion(VersionName(needed));
    bytes.resize(start);
    return WriteTree(*tree.root, bytes);
}

Status Document::State::write(const SaveOptions& options, Bytes& bytes, Diagnostics& diagnostics,
                              const ProgressCallback& progress) {
    if (!options.allowsIncomplete && !isWhole()) {
        for (const auto& [member, read] : trees)
            if (read.status != Status::Ok)
                diagnostics.add(NoteCode::General, Severity::Error, member,
                                "could not be read whole; saving it would lose the rest");
        return Status::Damaged;
    }
    const auto cannotWrite = [&](std::string_view member) {
        diagnostics.add(NoteCode::WriteFailed, Severity::Error, member, "the tree holds what XML can't");
        return Status::CouldNotWrite;
    };
    if (isFlat && progress && !progress({Progress::Step::Writing, {}, 0, 1})) return Status::Cancelled;
    if (isFlat)
        return writeTree({}, trees.at(std::string(kFlat)), bytes, diagnostics) ? Status::Ok : cannotWrite({});

    OdfPackage::WriteOptions write;
    write.fixedTime = options.fixedTime;
    write.compression = options.compression;
    write.threads = options.threads;
    write.progress = progress;
    // Only a signature makes it worth knowing whether anything has changed at all.
    std::map<std::string, Bytes, std::less<>> changed;
    const bool isSigned = hasSignature();
    if (isSigned) {
        for (auto& [member, read] : trees) {
            if (!read.root) continue;
            Bytes written;
            if (!writeTree(member, read, written, diagnostics)) return cannotWrite(member);
            if (!isUnchanged(member, written, diagnostics)) changed.emplace(member, std::move(written));
        }
        write.isChanged = !changed.empty();
    }
    write.replace = [&](std::string_view member, Bytes& replaced) -> std::optional<Status> {
        if (isSigned) {
            const auto at = changed.find(member);
            if (at == changed.end()) return std::nullopt;
            replaced = std::move(at->second);
            return Status::Ok;
        }
        const auto at = trees.find(member);
        if (at == trees.end() || !at->second.root) return std::nullopt;
        return writeTree(member, at->second, replaced, diagnostics) ? Status::Ok : cannotWrite(member);
    };
    return package.write(write, bytes, diagnostics);
}

Document::Document() noexcept = default;
Document::Document(std::unique_ptr<State> state) noexcept : state_(std::move(state)) {}
Document::Document(Document&& other) noexcept = default;
Document& Document::operator=(Document&& other) noexcept = default;
Document::~Document() = default;

Result Document::Open(const std::filesystem::path& path, const OpenOptions& options) {
    Bytes bytes;
    const Result read = Run([&](Diagnostics& diagnostics) {
        return package::ReadFileWhole(ToPath(path), options.limits.totalBytes, bytes, diagnostics);
    });
    return read ? OpenBytes(std::move(bytes), options) : read;
}

Result Document::Open(std::span<const unsigned char> bytes, const OpenOptions& options) {
    Bytes copy;
    const Result copied = Run([&](Diagnostics&) {
        copy.assign(bytes.begin(), bytes.end());
        return Status::Ok;
    });
    return copied ? OpenBytes(std::move(copy), options) : copied;
}

Result Document::Open(std::istream& stream, const OpenOptions& options) {
    Bytes bytes;
    const Result read = Run([&](Diagnostics& diagnostics) {
        constexpr std::size_t kPiece = std::size_t{1} << 16;
        while (stream) {
            const std::size_t used = bytes.size();
            if (used > options.limits.totalBytes) return Status::LimitExceeded;
            bytes.resize(used + kPiece);
            stream.read(reinterpret_cast<char*>(bytes.data() + used), static_cast<std::streamsize>(kPiece));
            bytes.resize(used + static_cast<std::size_t>(stream.gcount()));
        }
        if (!stream.bad()) return Status::Ok;
        diagnostics.add(NoteCode::General, Severity::Error, {}, "the stream can't be read to its end");
        return Status::NotReadable;
    });
    return read ? OpenBytes(std::move(bytes), options) : read;
}

Result Document::OpenBytes(std::vector<unsigned char> bytes, const OpenOptions& options) {
    return RunAsking(options.progress, [&](Diagnostics& diagnostics, const ProgressCallback& progress) {
        auto opened = std::make_unique<State>();
        opened->limits = opened->left = options.limits;
        const Status status = LooksLikeXml(bytes)
                                  ? opened->openFlat(bytes, diagnostics, progress)
                                  : opened->openPackage(std::move(bytes), options, diagnostics, progress);
        const bool isOpen = status == Status::Ok || status == Status::Damaged ||
                            status == Status::LimitExceeded || status == Status::OutOfMemory;
        if (isOpen && !opened->trees.empty()) state_ = std::move(opened);
        return status;
    });
}

Document Document::New(DocumentKind kind) {
    const std::string_view mediaType = MediaTypeFor(kind);
    const std::span<const TemplateMember> members = Templates(mediaType);
    if (members.empty()) return {};
    auto made = std::make_unique<State>();
    made->kind = {kind, false};
    made->package.setMediaType(mediaType);
    made->package.setVersion("1.2");
    for (const TemplateMember& member : members)
        made->package.put(member.name, Bytes(member.xml.begin(), member.xml.end()), member.mediaType);
    Diagnostics none;
    made->readMainTrees(none, {});
    return Document(std::move(made));
}

Result Document::Save(std::vector<unsigned char>& bytes, const SaveOptions& options) {
    bytes.clear();
    Asking asking(options.progress);
    Result result = Run([&](Diagnostics& diagnostics) {
        return state_ ? state_->write(options, bytes, diagnostics, asking.guarded()) : Status::NothingToSave;
    });
    if (!result) bytes = {};
    asking.rethrow();
    return result;
}

Result Document::Save(const std::filesystem::path& path, const SaveOptions& options) {
    return RunAsking(options.progress, [&](Diagnostics& diagnostics, const ProgressCallback& progress) {
        if (!state_) return Status::NothingToSave;
        Bytes bytes;
        const Status status = state_->write(options, bytes, diagnostics, progress);
        if (status != Status::Ok) return status;
        return package::WriteFileWhole(ToPath(path), bytes, diagnostics);
    });
}

Result Document::Save(std::ostream& stream, const SaveOptions& options) {
    return RunAsking(options.progress, [&](Diagnostics& diagnostics, const ProgressCallback& progress) {
        if (!state_) return Status::NothingToSave;
        Bytes bytes;
        const Status status = state_->write(options, bytes, diagnostics, progress);
        if (status != Status::Ok) return status;
        stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        if (stream.flush()) return Status::Ok;
        diagnostics.add(NoteCode::WriteFailed, Severity::Error, {}, "the stream didn't take all bytes");
        return Status::CouldNotWrite;
    });
}

bool Document::IsWhole() const noexcept {
    return state_ && state_->isWhole();
}
DocumentKind Document::Kind() const noexcept {
    return state_ ? state_->kind.kind : DocumentKind::Unknown;
}
bool Document::IsTemplate() const noexcept {
    return state_ && state_->kind.isTemplate;
}
bool Document::IsFlat() const noexcept {
    return state_ && state_->isFlat;
}

std::string Document::MediaType() const {
    if (!state_) return {};
    if (!state_->isFlat) return state_->package.mediaType();
    const CSDObject* const root = state_->root(kFlat);
    return root ? AttributeOf(*root, "office:mimetype") : std::string();
}

std::string Document::Version() const {
    if (!state_) return {};
    CTulStringW version;
    const CSDObject* const root = state_->root(state_->isFlat ? kFlat : kContent);
    if (root && GetAttributeText(*root, "office:version", version) && !version.IsEmpty())
        return version.utf8();
    return state_->isFlat ? std::string() : state_->package.version();
}

std::string Document::VersionOf(std::string_view member) const {
    const CSDObject* const root = state_ ? state_->root(state_->isFlat ? kFlat : member) : nullptr;
    return root ? AttributeOf(*root, "office:version") : std::string();
}

COfficeDocumentContent* Document::Content() {
    return state_ ? As<COfficeDocumentContent>(state_->root(kContent)) : nullptr;
}
COfficeDocumentStyles* Document::Styles() {
    return state_ ? As<COfficeDocumentStyles>(state_->root(kStyles)) : nullptr;
}
COfficeDocumentMeta* Document::Meta() {
    return state_ ? As<COfficeDocumentMeta>(state_->root(kMeta)) : nullptr;
}
COfficeDocumentSettings* Document::Settings() {
    return state_ ? As<COfficeDocumentSettings>(state_->root(kSettings)) : nullptr;
}
CMathMath* Document::Formula() {
    return state_ ? As<CMathMath>(state_->root(kContent)) : nullptr;
}
COfficeDocument* Document::Flat() {
    return state_ && state_->isFlat ? As<COfficeDocument>(state_->root(kFlat)) : nullptr;
}
COfficeBody* Document::Body() {
    return state_ ? state_->body() : nullptr;
}
COfficeText* Document::Text() {
    return ChildOf<COfficeText>(Body());
}
COfficeSpreadsheet* Document::Spreadsheet() {
    return ChildOf<COfficeSpreadsheet>(Body());
}
COfficePresentation* Document::Presentation() {
    return ChildOf<COfficePresentation>(Body());
}
COfficeDrawing* Document::Drawing() {
    return ChildOf<COfficeDrawing>(Body());
}

CSDObject* Document::Root(std::string_view member, Result* result) {
    CSDObject* root = nullptr;
    Result told = Run([&](Diagnostics& diagnostics) {
        if (!state_) return Status::NotReadable;
        Status status = Status::NotReadable;
        if (const Tree* const found = state_->tree(member, diagnostics, &status)) root = found->root.get();
        if (!root && status == Status::Ok) status = Status::UnknownType; // XML of a root that no class has
        return status;
    });
    if (result) *result = std::move(told);
    return root;
}

std::vector<std::string> Document::Trees() const {
    std::vector<std::string> names;
    if (state_)
        for (const auto& [name, tree] : state_->trees)
            if (tree.root && !state_->isFlat) names.push_back(name);
    return names;
}

std::vector<CSDObject*> Document::Roots() {
    std::vector<CSDObject*> roots;
    if (state_)
        for (const auto& [name, tree] : state_->trees)
            if (tree.root) roots.push_back(tree.root.get());
    return roots;
}

std::vector<std::string> Document::Members() const {
    return state_ ? state_->package.names() : std::vector<std::string>();
}

bool Document::HasMember(std::string_view name) const {
    return state_ && state_->package.contains(name);
}

std::vector<std::string> Document::Objects() const {
    std::vector<std::string> folders;
    for (const std::string& name : Members()) {
        const std::size_t slash = name.rfind('/');
        if (slash != std::string::npos && name.substr(slash + 1) == kContent)
            folders.push_back(name.substr(0, slash));
    }
    return folders;
}

Result Document::ReadMember(std::string_view name, std::vector<unsigned char>& bytes) {
    bytes.clear();
    return Run([&](Diagnostics& diagnostics) {
        if (!state_) return Status::NotReadable;
        const auto at = state_->trees.find(name);
        if (at == state_->trees.end() || !at->second.root || state_->isFlat)
            return state_->package.read(name, bytes, diagnostics);
        return state_->writeTree(name, at->second, bytes, diagnostics) ? Status::Ok : Status::CouldNotWrite;
    });
}

Result Document::WriteMember(std::string_view name, std::span<const unsigned char> bytes,
                             std::string_view mediaType) {
    return Run([&](Diagnostics& diagnostics) {
        if (!state_ || state_->isFlat ||
            !state_->package.put(name, Bytes(bytes.begin(), bytes.end()), mediaType)) {
            diagnostics.add(NoteCode::General, Severity::Error, name, "no member may have this name");
            return Status::CouldNotWrite;
        }
        if (const auto at = state_->trees.find(name); at != state_->trees.end()) state_->trees.erase(at);
        return Status::Ok;
    });
}

bool Document::RemoveMember(std::string_view name) {
    if (!state_ || !state_->package.remove(name)) return false;
    if (const auto at = state_->trees.find(name); at != state_->trees.end()) state_->trees.erase(at);
    return true;
}

std::string Document::MediaTypeOf(std::string_view name) const {
    return state_ ? state_->package.mediaTypeOf(name) : std::string();
}

bool Document::SetMediaTypeOf(std::string_view name, std::string_view mediaType) {
    if (!state_ || state_->isFlat) return false;
    const std::vector<std::string> names = state_->package.names();
    const bool isKnown = std::any_of(names.begin(), names.end(), [&](const std::string& member) {
        return member == name || (name.ends_with('/') && member.starts_with(name));
    });
    if (isKnown) state_->package.setMediaTypeOf(name, mediaType);
    return isKnown;
}

std::string Document::AddObject(Document& object) {
    if (!state_ || state_->isFlat || !object.state_ || object.state_->isFlat) return {};
    std::string folder = FreeObjectFolder(*this);
    const std::string inside = folder + '/';
    for (const std::string& name : object.Members()) {
        if (name == "mimetype" || name.starts_with("META-INF/")) continue;
        Bytes bytes;
        if (object.ReadMember(name, bytes) &&
            state_->package.put(inside + name, std::move(bytes), object.MediaTypeOf(name)))
            continue;
        state_->package.removeFolder(folder);
        return {};
    }
    state_->package.setMediaTypeOf(inside, object.MediaType());
    return folder;
}

std::string Document::AddPicture(std::span<const unsigned char> bytes, std::string_view fileName) {
    if (!state_ || state_->isFlat) return {};
    return state_->package.addFree("Pictures", fileName, Bytes(bytes.begin(), bytes.end()));
}

std::string Document::AddPictureFile(const std::filesystem::path& file, Result* result) {
    std::string name;
    Result told = Run([&](Diagnostics& diagnostics) {
        Bytes bytes;
        if (!state_ || state_->isFlat) return Status::NotReadable;
        const Status status =
            package::ReadFileWhole(ToPath(file), state_->limits.memberBytes, bytes, diagnostics);
        if (status != Status::Ok) return status;
        name = state_->package.addFree("Pictures", ToPath(file).name(), std::move(bytes));
        return name.empty() ? Status::CouldNotWrite : Status::Ok;
    });
    if (result) *result = std::move(told);
    return name;
}

std::vector<FileEntry> Document::FileEntries() const {
    return state_ ? state_->package.fileEntries() : std::vector<FileEntry>();
}

Result Document::ReadFileEntry(std::string_view name, std::vector<unsigned char>& bytes) const {
    bytes.clear();
    return Run([&](Diagnostics& diagnostics) {
        return state_ ? state_->package.readFileEntry(name, bytes, diagnostics) : Status::NotReadable;
    });
}

bool Document::IsEncrypted() const noexcept {
    return state_ && state_->package.isEncrypted();
}

bool Document::SetPassword(std::string_view password, std::optional<EncryptionScheme> scheme) {
    if (!state_ || state_->isFlat || password.empty()) return false;
    OdfPackage::Encryption encryption = state_->package.encryption();
    if (scheme)
        encryption = *scheme == EncryptionScheme::Aes256Gcm ? OdfPackage::Encryption::Whole
                                                            : OdfPackage::Encryption::Members;
    else if (encryption == OdfPackage::Encryption::None)
        encryption = OdfPackage::Encryption::Members;
    state_->package.setEncryption(encryption, password);
    return true;
}

void Document::RemovePassword() {
    if (state_) state_->package.setEncryption(OdfPackage::Encryption::None, {});
}

} // namespace ODF
