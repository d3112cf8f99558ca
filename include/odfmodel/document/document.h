#pragma once

/// @file
/// The older document classes, which work on the files of a package in a temporary folder. They keep what the
/// element classes list; `ODF::Document` (open_document.h) keeps all, and is the one for new programs.
///
///     ODF::CODFDoc document;
///     if (document.Open("report.odt") == 0 || document.GetDiagnostics().status() != ODF::Status::Ok) {
///         for (const ODF::Note& note : document.GetDiagnostics().notes())
///             std::cerr << note.member << ':' << note.line << ": " << note.text << '\n';
///         return 1;
///     }
///     if (const CSDObject* const content = document.GetContentClass())
///         std::cout << ODF::DocumentText(*content) << '\n';
///     document.Save("copy.odt"); // once; the status tells whether the file was written
///     if (document.GetDiagnostics().status() != ODF::Status::Ok) return 1;

#include <odfmodel/core/diagnostics.h>
#include <odfmodel/core/fidelity.h>
#include <odfmodel/core/limits.h>
#include <odfmodel/core/serializer.h>
#include <odfmodel/document/part.h>
#include <odfmodel/export.h>
#include <odfmodel/package/document_type.h>
#include <odfmodel/package/text.h>
#include <odfmodel/serial/sax_reader.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace SDPackage {
class IPackage;
} // namespace SDPackage

namespace ODF {

/// A package on disk together with the element trees of its XML parts.
///
/// `int` results are 1 for success and 0 for failure; `GetDiagnostics` tells why, and what was met on the
/// way. A document belongs to one thread at a time; different documents never meet. Pointers that it hands
/// out live as long as the document, or until it is opened again.
class ODFMODEL_API CDocument {
public:
    using DocumentType = sd::SDDocType::DocumentType;

    CDocument();
    CDocument(const CDocument&) = delete;
    CDocument& operator=(const CDocument&) = delete;
    /// Deletes all trees and parts and removes the temporary folder.
    virtual ~CDocument();

    /// Opens the package at `path` and reads all trees. A part whose XML is damaged keeps what came before
    /// the fault; the result is still 1, and the status `Damaged`. A document that was open is given up
    /// first. After a lack of memory nothing is open.
    virtual int Open(const unsigned short* path);
    /// Writes all trees and the package to `path`, whose old file stays as it is until the new one is
    /// complete. A document can be saved once; a second call writes nothing and returns 1. A package that
    /// could not be written shows in the status of the diagnostics alone, and the document can then be saved
    /// elsewhere. What was damaged when it was opened is noted again, with the status `Damaged`: the new file
    /// holds less than the old one.
    virtual int Save(const unsigned short* path);

    int Open(const SDPackage::PlainText auto& path) { return Open(CTulStringW(path).c_str()); }
    int Save(const SDPackage::PlainText auto& path) { return Save(CTulStringW(path).c_str()); }

    /// The password for the next `Open`. The pointer is kept, not the text: it must stay valid until then.
    void SetPassword(const unsigned short* password);
    /// The same; a copy is kept until the next `Open` is over, and wiped then.
    void SetPassword(const SDPackage::PlainText auto& password) { KeepPassword(CTulStringW(password)); }
    /// The bounds of the next `Open`.
    void SetLimits(const Limits& limits) { limits_ = limits; }
    /// What of the XML the next `Open` keeps and the next `Save` writes; `Fidelity::Listed` at first. What is
    /// told of packages isn't touched: see `ODF::Document` for one that keeps everything.
    void SetFidelity(Fidelity fidelity) { fidelity_ = fidelity; }

    /// The part of "content.xml", or null.
    CODFPart* GetMainPart() const noexcept { return mainPart_; }
    /// The part that stands for the package as a whole, path "/"; its children are all other parts.
    CODFPart* GetRootPart() const noexcept { return rootPart_; }
    DocumentType GetDocType() const noexcept { return docType_; }
    /// Appends to `out` every part with exactly that content type.
    void GetPartsByContentType(CTulStringW contentType, std::vector<CODFPart*>* out) const;
    /// Builds the parts of a new document; `CODFDoc::CreateMainPart` calls it.
    int _CreateRootAndMainPart();

    /// The folder in which the members are files until the next save; a new document gets one by this. Empty
    /// when there is no document, or no folder can be made.
    CTulStringW MakeFolder();

    /// What happened during the last `Open` or `Save`.
    const Diagnostics& GetDiagnostics() const noexcept { return diagnostics_; }

protected:
    void SetDocType(DocumentType type) noexcept { docType_ = type; }
    /// All parts with the package records that they came from or went into.
    const std::vector<std::pair<SDPackage::IPart*, CODFPart*>>& Parts() const noexcept { return partMap_; }
    /// The part named `name` at the top of the package, or null.
    CODFPart* FindTopPart(std::u16string_view name) const;

private:
    int _InitParts();
    int _PartReadSax(std::uint64_t fileBytes);
    CODFPart* _FindMainPartODF() const;
    int _WritePart();
    int _WriteTraversePart(ISDPart* part);
    int _WritePartContent(const unsigned short* path, ISDPart* part);
    int _SetPackageRoot(const unsigned short* path, const unsigned short* localPath);
    int _MakePackagePart(const unsigned short* path);
    int _SDPartToPackagePart(ISDPart* part, SDPackage::IPart* ipart);
    int _MakeContentTypes(ISDPart* part);
    int Read(const unsigned short* path);
    int Write(const unsigned short* path);

    void KeepPassword(CTulStringW password);
    void WipePassword() noexcept;
    void MakePackage();
    void Enter(SDPackage::IPart* ipart, CODFPart* part);
    /// Deletes every part that this document holds, each once, and the package.
    void Clear() noexcept;
    void RemoveOwnFolder() noexcept;

    std::unique_ptr<SDPackage::IPackage> package_;
    std::vector<std::pair<SDPackage::IPart*, CODFPart*>> partMap_;
    std::vector<const CODFPart*> unreadParts_; ///< whose file is no document of their class: left as it is
    CODFPart* mainPart_ = nullptr;
    CODFPart* rootPart_ = nullptr;
    DocumentType docType_ = sd::SDDocType::DocTypeUnknown;
    std::string ownFolder_;             ///< of a new document, in UTF-8, until its package has taken it over
    std::shared_ptr<void> folderClaim_; ///< tells other processes that the folder is in use
    const unsigned short* password_ = nullptr;
    std::u16string passwordCopy_;
    Limits limits_;
    Fidelity fidelity_ = Fidelity::Listed;
    bool isComplete_ = false;  ///< all parts were read, or made for a new document
    bool isDamaged_ = false;   ///< a part was read only as far as its fault
    std::vector<Note> faults_; ///< errors of the last `Open`
    Diagnostics diagnostics_;
};

} // namespace ODF

/// Forwarders to `CreateSaxReader` and its sisters.
ODFMODEL_API CSDSaxReader* ODFCreateSaxReader();
ODFMODEL_API void ODFReleaseSaxReader(CSDSaxReader* reader);
ODFMODEL_API CSDSerializer* ODFCreateSerialize();
ODFMODEL_API void ODFReleaseSerialize(CSDSerializer* serializer);
