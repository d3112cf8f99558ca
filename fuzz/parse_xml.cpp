// XML of any kind into the tree of a document's content, and back: what was read once has to survive a second
// trip.
#include <odfmodel/odfmodel.h>

#include <cstdlib>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const auto make = [] { return std::unique_ptr<CSDObject>(ODF::COfficeDocument::Create()); };
    const std::unique_ptr<CSDObject> tree = make();
    ODF::FromXml({reinterpret_cast<const char*>(data), size}, *tree);
    const std::string once = ODF::ToXml(*tree);
    const std::unique_ptr<CSDObject> again = make();
    if (!ODF::FromXml(once, *again)) std::abort(); // what is written is well formed
    if (ODF::ToXml(*again) != once) std::abort();
    return 0;
}
