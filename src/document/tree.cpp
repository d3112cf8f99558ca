#include "document/tree.h"

#include "serial/xml/memory_xml.h"
#include "serial/xml/root_element.h"

#include <odfmodel/core/reflection.h>
#include <odfmodel/serial/sax_reader.h>

#include <algorithm>

namespace ODF {
namespace {

struct ReleaseReader {
    void operator()(CSDSaxReader* reader) const noexcept { ReleaseSaxReader(reader); }
};

/// What the notes from `first` on say of why a parse has ended.
Status StatusOf(const Diagnostics& diagnostics) noexcept {
    Status status = Status::Damaged;
    for (const Note& note : diagnostics.notes())
        if (note.code == NoteCode::DepthLimit || note.code == NoteCode::SizeLimit)
            status = Status::LimitExceeded;
    return status;
}

} // namespace

Tree ReadTree(std::span<const unsigned char> xml, std::string_view member, const Limits& limits,
              Diagnostics& diagnostics) {
    Tree tree;
    if (xml.empty()) return tree; // some programs write members of no bytes
    const std::string name = xml::RootElementOf(xml, limits);
    if (name.empty()) {
        diagnostics.add(NoteCode::XmlNotWellFormed, Severity::Error, member, "this is no XML");
        tree.status = Status::Damaged;
        return tree;
    }
    const std::optional<ClassInfo> info = ClassOfElement(name);
    if (!info) {
        diagnostics.add(NoteCode::General, Severity::Information, member,
                        "the root element " + name + " is not known; the member is kept as bytes");
        return tree;
    }
    tree.root.reset(info->create());
    const std::unique_ptr<CSDSaxReader, ReleaseReader> reader(CreateSaxReader());
    Diagnostics own;
    reader->SetLimits(limits);
    reader->SetFidelity(Fidelity::Everything);
    reader->SetDiagnostics(&own, member);
    if (!reader->ParseMemory(xml.data(), xml.size(), tree.root.get())) tree.status = StatusOf(own);
    tree.cost = reader->GetCost();
    for (const Note& note : own.notes())
        diagnostics.add(note);
    return tree;
}

bool WriteTree(CSDObject& root, std::vector<unsigned char>& bytes, FormatVersion* newest) {
    FormatVersion needed = FormatVersion::Base;
    const std::string xml = xml::ToXml(root, needed);
    if (newest) *newest = needed;
    bytes.insert(bytes.end(), xml.begin(), xml.end());
    return !xml.empty();
}

Limits SharedLimits(const Limits& limits, std::uint64_t fileBytes) noexcept {
    Limits shared = limits;
    shared.freeObjects += fileBytes * limits.objectsPerByte;
    shared.freeTreeBytes += fileBytes * limits.treeBytesPerByte;
    shared.objectsPerByte = shared.treeBytesPerByte = 0;
    return shared;
}

void Spend(Limits& left, const TreeCost& cost) noexcept {
    left.freeObjects -= std::min(left.freeObjects, cost.objects);
    left.freeTreeBytes -= std::min(left.freeTreeBytes, cost.textBytes);
}

} // namespace ODF
