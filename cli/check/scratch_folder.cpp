#include "check/scratch_folder.h"

#include <cstdlib>
#include <system_error>

namespace command {

ScratchFolder::ScratchFolder() {
    std::error_code error;
    std::string name = (std::filesystem::temp_directory_path(error) / "odfmodel-XXXXXX").string();
    if (!error && mkdtemp(name.data())) path_ = name;
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    if (isThere()) std::filesystem::remove_all(path_, ignored);
}

} // namespace command
