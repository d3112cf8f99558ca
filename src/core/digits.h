#pragma once

namespace ODF {

constexpr bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

} // namespace ODF
