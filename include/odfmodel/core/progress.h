#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace ODF {

/// How far an `Open` or `Save` has come.
struct Progress {
    enum class Step {
        Keys,    ///< keys are derived; counted in keys
        Reading, ///< members are unpacked and their trees made; counted in bytes of XML
        Writing, ///< members are made and packed; counted in members
        Packing  ///< the archive is put together; counted in members
    };
    Step step = Step::Reading;
    std::string_view member; ///< that is worked on; empty for none. Valid during the call
    std::uint64_t done = 0;
    std::uint64_t total = 0; ///< of this step, as far as the file tells; 0 when it doesn't
};

/// Is called now and then, on the thread of the operation, and must return quickly. False ends the operation
/// with `Status::Cancelled`. What it throws ends the operation too and comes out of it.
using ProgressCallback = std::function<bool(const Progress& progress)>;

} // namespace ODF
