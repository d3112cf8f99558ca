#include "check/scratch_folder.h"

namespace command {

ScratchFolder::ScratchFolder() {
    if (owner_.SetTempFolder(nullptr) != 0) path_ = ODF::ToUtf8(owner_.GetTempFolder());
}

} // namespace command
