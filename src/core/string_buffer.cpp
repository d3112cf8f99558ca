#include "core/string_buffer.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>

namespace ODF::string_buffer {
namespace {

constexpr std::int32_t kNil = -2;

// Lies as the heap's buffers do. Never written to: its count is not changed and nothing is put into it.
struct alignas(16) NilBuffer {
    StringHeader header{kNil, 0, 0};
    unsigned short terminator = 0;
};
const NilBuffer kNilBuffer;

} // namespace

unsigned short* Nil() noexcept {
    return const_cast<unsigned short*>(&kNilBuffer.terminator);
}

unsigned short* Begin(void* place, std::size_t length) noexcept {
    auto* const header = new (place) StringHeader{1, 0, static_cast<std::uint32_t>(CapacityFor(length))};
    auto* const units = reinterpret_cast<unsigned short*>(header + 1);
    *units = 0;
    return units;
}

unsigned short* Allocate(std::size_t length) noexcept {
    if (length == 0) return Nil();
    if (length > kMaxLength) return nullptr;
    void* const place = std::malloc(BytesFor(length));
    return place ? Begin(place, length) : nullptr;
}

unsigned short* Fitted(unsigned short* units) noexcept {
    StringHeader* const header = HeaderOf(units);
    const std::size_t capacity = CapacityFor(header->length);
    if (capacity >= header->capacity) return units;
    auto* const smaller = static_cast<StringHeader*>(std::realloc(header, BytesFor(header->length)));
    if (!smaller) return units;
    smaller->capacity = static_cast<std::uint32_t>(capacity);
    return reinterpret_cast<unsigned short*>(smaller + 1);
}

unsigned short* Join(std::u16string_view a, std::u16string_view b, std::size_t room) noexcept {
    unsigned short* const units = Allocate(std::max(a.size() + b.size(), room));
    if (units && units != Nil()) {
        std::memcpy(units, a.data(), a.size() * sizeof(unsigned short));
        if (!b.empty()) std::memcpy(units + a.size(), b.data(), b.size() * sizeof(unsigned short));
        SetLength(units, a.size() + b.size());
    }
    return units;
}

unsigned short* Share(unsigned short* units) noexcept {
    if (units == Nil()) return units;
    StringHeader* const header = HeaderOf(units);
    if (Arena::owns(header))
        if (unsigned short* const copy = Join({ToChar16(units), header->length}, {})) return copy;
    std::atomic_ref<std::int32_t>(header->references).fetch_add(1, std::memory_order_relaxed);
    return units;
}

void Release(unsigned short* units) noexcept {
    if (units == Nil()) return;
    StringHeader* const header = HeaderOf(units);
    std::atomic_ref<std::int32_t> references(header->references);
    // A buffer with one owner can't be shared by another thread at the same time, so the last release needs
    // no locked instruction.
    if (references.load(std::memory_order_acquire) != 1 &&
        references.fetch_sub(1, std::memory_order_acq_rel) != 1)
        return;
    if (Arena::owns(header))
        Arena::release(header);
    else
        std::free(header);
}

bool IsShared(unsigned short* units) noexcept {
    if (units == Nil()) return true;
    return std::atomic_ref<std::int32_t>(HeaderOf(units)->references).load(std::memory_order_acquire) > 1;
}

} // namespace ODF::string_buffer
