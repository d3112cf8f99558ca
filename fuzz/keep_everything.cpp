// XML of any kind into a tree of full fidelity and back: what was kept once is kept again, byte for byte, and
// an attribute that is set changes nothing else.
#include <odfmodel/odfmodel.h>

#include <cstdlib>
#include <memory>

namespace {

std::unique_ptr<CSDObject> Read(std::string_view xml) {
    std::unique_ptr<CSDObject> tree(ODF::COfficeDocument::Create());
    return ODF::FromXml(xml, *tree, ODF::Fidelity::Everything) ? std::move(tree) : nullptr;
}

std::string Write(CSDObject& tree) {
    return ODF::ToXml(tree, {}, ODF::Fidelity::Everything);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::unique_ptr<CSDObject> tree = Read({reinterpret_cast<const char*>(data), size});
    if (!tree) return 0;
    const std::string once = Write(*tree);
    const std::unique_ptr<CSDObject> again = Read(once);
    if (!again || Write(*again) != once) std::abort();
    // On the root, where it is easy to find: the rest has to stay as it was.
    CTulStringW version;
    const bool had = ODF::GetAttributeText(*again, "office:version", version);
    if (!ODF::SetAttributeText(*again, "office:version", "changed")) std::abort();
    const std::string changed = Write(*again);
    if (changed.find("version=\"changed\"") == std::string::npos) std::abort();
    if (!had) return 0;
    if (!ODF::SetAttributeText(*again, "office:version", version.utf8())) std::abort();
    if (Write(*again) != once) std::abort();
    return 0;
}
