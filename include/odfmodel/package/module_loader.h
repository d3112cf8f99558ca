#pragma once

#include <odfmodel/core/string.h>
#include <odfmodel/export.h>
#include <odfmodel/package/text.h>

#include <functional>
#include <string_view>
#include <utility>
#include <vector>

namespace SDPackage {

/// What a load that is about to happen or has failed is about.
struct DelayLoadInfo {
    const char* moduleName = nullptr; ///< file name of the module, UTF-8
    unsigned lastError = 0;           ///< the system's error number of a failed load
};

/// Notices of `ModuleLoader`.
enum DelayLoadCode : unsigned { DelayLoadPreLoad = 1, DelayLoadFailed = 3 };

/// Finds and loads modules: first in the Common path, the folder that holds the shared modules of an
/// installation, then along the system's own search path. Failures go to a log file, one a day, and to the
/// host. All state belongs to the object; nothing happens until it is asked.
///
/// The Common path is the first of the executable's folder, "Bin" below it and "Bin" below its three
/// ancestors that holds the marker file, else the machine setting "Common Path" of
/// `Software\TUL\Shared\Common9.6`. The log is in "TUL/User/" below the folder that the environment
/// variable APPDATA names, else in "Tul/" below $XDG_STATE_HOME or
/// ~/.local/state.
class ODFMODEL_API ModuleLoader {
public:
    using Argument = CTulStringW::FormatArgument;
    /// Shows a message to the user; both texts are UTF-16.
    using MessageFunction = std::function<void(const unsigned short* title, const unsigned short* text)>;

    ModuleLoader();
    ModuleLoader(const ModuleLoader&) = delete;
    ModuleLoader& operator=(const ModuleLoader&) = delete;
    /// Releases the modules that it loaded.
    ~ModuleLoader();

    /// Adds one record to the log of the day: "[hh:mm:ss]" in local time and the message, which brings its
    /// own line end. Any failure passes in silence.
    template<typename... Arguments>
    void WriteDiagnosticLog(std::u16string_view format, const Arguments&... arguments) {
        CTulStringW text;
        text.Format(format, arguments...);
        WriteLogRecord(text);
    }
    /// Shows a message under the title "DllLoader error".
    template<typename... Arguments>
    void ShowLoaderError(std::u16string_view format, const Arguments&... arguments) {
        CTulStringW text;
        text.Format(format, arguments...);
        ShowMessage(text);
    }

    /// Finds the Common path. `out` is a buffer of 260 units with the terminator; it is untouched when the
    /// result is false, and the user has been told then. The path isn't folded.
    bool FindCommonPath(unsigned short* out);
    bool FindCommonPath(CTulStringW& out);
    /// Puts the Common path at the head of the process's PATH. As it changes the environment, it may not run
    /// beside threads that read it.
    void InsertCommonPath();
    /// For the notice `DelayLoadPreLoad`: loads the module, from the Common path when `InsertCommonPath` has
    /// run. A module handle, which this object releases, or null.
    void* OnDelayLoadNotify(unsigned code, const DelayLoadInfo* info);
    /// For the notice `DelayLoadFailed`: logs the failure and tells the user. Null in any case.
    void* OnDelayLoadFailure(unsigned code, const DelayLoadInfo* info);
    /// Hands a module over, to be released with the others; null is ignored.
    void RememberLoadedModule(void* module);
    /// Releases all modules, the last one first.
    void ReleaseLoadedModules();

    /// Who shows the messages; empty for the standard error stream.
    void SetMessageFunction(MessageFunction show) { show_ = std::move(show); }
    /// The file that tells the Common path; "libTulCore.so" unless set.
    void SetMarkerFile(const PlainText auto& name) { markerFile_ = CTulStringW(name); }

private:
    void WriteLogRecord(const CTulStringW& text) const;
    void ShowMessage(const CTulStringW& text) const;

    MessageFunction show_;
    CTulStringW markerFile_;
    std::vector<void*> loadedModules_;
    bool isActive_ = false;
};

} // namespace SDPackage
