#pragma once

/// Where the target of a link lies.
enum TargetMode {
    TargetModeInternal = 0, ///< a member of the same package
    TargetModeExternal = 1  ///< outside the package; the target is a URI
};
