#pragma once

#include <odfmodel/core/string.h>
#include <odfmodel/export.h>

#include <string_view>

/// An open file of the base library; null is none.
using TulFileHandle = void*;
/// A loaded module; null is none.
using TulModuleHandle = void*;

/// Opens an existing regular file for reading. Of the parameters only `path` has a meaning here; the others
/// are those of the platform call that callers know: `access` 0x80000000 (read), `share` 3, `security` null,
/// `disposition` 3 (existing file), `attributes` 128, `templateFile` null. Any other access or disposition
/// gives null, as does a file that can't be read. The handle keeps the file's bytes readable even when its
/// name goes; it is closed with `TulCloseFile`.
ODFMODEL_API TulFileHandle TulCreateFile(const unsigned short* path, unsigned access, unsigned share,
                                         void* security, unsigned disposition, unsigned attributes,
                                         TulFileHandle templateFile);
/// The same with the only parameters in use.
inline TulFileHandle TulOpenFile(std::u16string_view path) {
    return TulCreateFile(CTulStringW(path).c_str(), 0x80000000U, 3, nullptr, 3, 128, nullptr);
}
/// Closes the handle; null has no effect. Non-zero when a file was closed.
ODFMODEL_API int TulCloseFile(TulFileHandle file);

/// Deletes a file; non-zero when it is gone.
ODFMODEL_API int TulDeleteFile(const unsigned short* path);
/// Non-zero when a regular file is at `path`.
ODFMODEL_API int TulFileExist(const unsigned short* path);
/// Non-zero when anything is at `path`, a broken link too.
ODFMODEL_API int TulExistDir(const unsigned short* path);

/// Writes the path of a fresh temporary file, whose name starts with `prefix`, into `buffer` of `capacity`
/// units with its terminator. The file is created, empty and readable by its owner alone, so that no one else
/// can take the name. Non-zero on success; else the buffer holds the empty text. `reserved` isn't read.
ODFMODEL_API int TulPathMakeTemp(const unsigned short* prefix, const unsigned short* reserved,
                                 unsigned short* buffer, int capacity);

/// Loads a module; null when it can't be loaded. It is unloaded with `TulFreeLibrary`.
ODFMODEL_API TulModuleHandle TulLoadLibraryModulePath(const unsigned short* path);
/// The address of a symbol that the module exports, or null.
ODFMODEL_API void* TulGetProcAddress(TulModuleHandle module, const char* name);
/// Unloads the module; null has no effect.
ODFMODEL_API void TulFreeLibrary(TulModuleHandle module);

/// The place where a host with a message loop would get its turn: once a member in the save loops and after
/// each read of a member. Nothing happens here. A loop of that kind would have to be known to the whole
/// process, and the library keeps no such state; a host that must stay responsive works with documents on a
/// thread of its own.
inline void _TulProcessHungAppMessage() noexcept {}

/// The roots of the configuration store.
enum HKEY : unsigned { HKEY_CURRENT_USER = 0x80000001U, HKEY_LOCAL_MACHINE = 0x80000002U };

/// Reads text values from the configuration store: the user's or the machine's `odfmodel/settings.ini` (below
/// `$XDG_CONFIG_HOME` or `~/.config`, and below `$XDG_CONFIG_DIRS` or `/etc`). A section is a key, its lines
/// `name = value` are values:
///
///     [Software\TUL\Shared\Serializer]
///     module = /usr/lib/userdata.so
class ODFMODEL_API CTulRegistry {
public:
    /// Opens the key `subKey` below `root` for reading; `flags` is 0.
    CTulRegistry(const unsigned short* subKey, HKEY root, int flags = 0);
    CTulRegistry(std::u16string_view subKey, HKEY root, int flags = 0)
        : CTulRegistry(CTulStringW(subKey).c_str(), root, flags) {}
    ~CTulRegistry() = default;

    /// Reads a value of the key, or of `subKey` below it unless that is null, into `buffer` of `capacity`
    /// units. Non-zero on success. 0, with the empty text in the buffer, when there is no such value or it
    /// doesn't fit.
    int GetStringValue(const unsigned short* subKey, const unsigned short* valueName, unsigned short* buffer,
                       int capacity) const;
    int GetStringValue(std::u16string_view valueName, unsigned short* buffer, int capacity) const {
        return GetStringValue(nullptr, CTulStringW(valueName).c_str(), buffer, capacity);
    }

private:
    CTulStringW key_;
    HKEY root_;
};
