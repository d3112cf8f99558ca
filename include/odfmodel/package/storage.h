#pragma once

#include <odfmodel/export.h>
#include <odfmodel/package/text.h>

#include <cstdint>

namespace SDPackage {

/// One stream of a compound storage file, for reading and writing at a position. Byte counts; a result
/// smaller than asked for tells of the end of the stream or of a fault.
class ODFMODEL_API IStream {
public:
    IStream(const IStream&) = delete;
    IStream& operator=(const IStream&) = delete;

    virtual unsigned Read(void* buffer, unsigned byteCount) = 0;
    /// Writes at the position and moves it; the stream grows as needed.
    virtual unsigned Write(const void* buffer, unsigned byteCount) = 0;
    /// Sets the position, which may be beyond the end.
    virtual void Seek(std::uint64_t position) = 0;
    virtual std::uint64_t Tell() const = 0;
    virtual std::uint64_t GetSize() const = 0;
    /// Cuts the stream or fills it up with zeros; non-zero for success.
    virtual int SetSize(std::uint64_t byteCount) = 0;
    /// Ends the work on the stream. The object is gone afterwards.
    virtual void Release() = 0;

protected:
    IStream() = default;
    virtual ~IStream();
};

/// An open compound storage file. Changes reach the file at `Release`.
class ODFMODEL_API IStorage {
public:
    IStorage(const IStorage&) = delete;
    IStorage& operator=(const IStorage&) = delete;

    /// A stream at the top of the storage, position 0; null when there is none of that name. Owned by the
    /// caller until its `Release`, which must come before that of the storage.
    virtual IStream* OpenStream(const unsigned short* name) = 0;
    /// A new empty stream in place of what bears that name; null when the name can't be used.
    virtual IStream* CreateStream(const unsigned short* name) = 0;
    /// Writes the file when something has changed, next to it and moved over it in the end, and ends the
    /// work. Non-zero unless the file couldn't be written, which then is as it was. The object is gone
    /// afterwards.
    virtual int Release() = 0;

    IStream* OpenStream(const PlainText auto& name) { return OpenStream(CTulStringW(name).c_str()); }
    IStream* CreateStream(const PlainText auto& name) { return CreateStream(CTulStringW(name).c_str()); }

protected:
    IStorage() = default;
    virtual ~IStorage();
};

/// Opens the compound storage file at `path` for reading and writing; null when that can't be done, and
/// always in a build without the user data module. The caller owns it until its `Release`.
ODFMODEL_API IStorage* OpenStorage(const unsigned short* path);
/// Creates an empty compound storage file at `path`, in place of what is there; null as above.
ODFMODEL_API IStorage* CreateStorage(const unsigned short* path);

} // namespace SDPackage
