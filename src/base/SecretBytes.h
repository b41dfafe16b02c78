#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace vellumor {

// Bytes that hold a secret: one owner, kept between guard pages and out of core dumps, wiped when
// released. It cannot be copied, printed or compared. Behind the last byte stands a zero.
class SecretBytes {
public:
    SecretBytes() = default;
    // `size` zero bytes to be filled in. Throws std::bad_alloc when guarded memory cannot be had.
    explicit SecretBytes(std::size_t size);
    // A copy of `bytes`.
    explicit SecretBytes(std::string_view bytes);
    SecretBytes(SecretBytes&& other) noexcept;
    SecretBytes& operator=(SecretBytes&& other) noexcept;
    SecretBytes(const SecretBytes&) = delete;
    SecretBytes& operator=(const SecretBytes&) = delete;
    ~SecretBytes();

    // `size` zero bytes in place of the present ones, in the same memory when it is large enough:
    // guarding new memory costs a dozen system calls. Throws as the constructor does.
    void refill(std::size_t size);
    // Forgets what lies behind the first `size` bytes; a size beyond the present one changes
    // nothing.
    void shrink(std::size_t size) { keepOnly(0, size); }
    // Forgets all but the `size` bytes from `begin` on, which come to stand at the front. A piece
    // that does not lie within the present bytes changes nothing.
    void keepOnly(std::size_t begin, std::size_t size);

    [[nodiscard]] std::span<char> bytes() { return {m_data, m_size}; }
    [[nodiscard]] std::string_view view() const { return {m_data, m_size}; }

private:
    char* m_data = nullptr;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0; // without the zero behind the last byte
};

} // namespace vellumor
