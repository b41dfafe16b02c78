#include "base/SecretBytes.h"

#include <sodium.h>

#include <algorithm>
#include <new>
#include <utility>

namespace vellumor {

SecretBytes::SecretBytes(std::size_t size)
{
    if (size == 0)
        return;
    if (sodium_init() < 0)
        throw std::bad_alloc();
    m_data = static_cast<char*>(sodium_malloc(size + 1));
    if (m_data == nullptr)
        throw std::bad_alloc();
    std::fill_n(m_data, size + 1, '\0');
    m_size = size;
    m_capacity = size;
}

SecretBytes::SecretBytes(std::string_view bytes)
    : SecretBytes(bytes.size())
{
    std::copy(bytes.begin(), bytes.end(), m_data);
}

SecretBytes::SecretBytes(SecretBytes&& other) noexcept
    : m_data(std::exchange(other.m_data, nullptr))
    , m_size(std::exchange(other.m_size, 0))
    , m_capacity(std::exchange(other.m_capacity, 0))
{
}

SecretBytes& SecretBytes::operator=(SecretBytes&& other) noexcept
{
    std::swap(m_data, other.m_data);
    std::swap(m_size, other.m_size);
    std::swap(m_capacity, other.m_capacity);
    return *this;
}

SecretBytes::~SecretBytes()
{
    sodium_free(m_data); // wipes; a null pointer is allowed
}

void SecretBytes::refill(std::size_t size)
{
    if (size > m_capacity) {
        *this = SecretBytes(size);
        return;
    }
    shrink(0);
    m_size = size;
}

void SecretBytes::keepOnly(std::size_t begin, std::size_t size)
{
    if (begin > m_size || size > m_size - begin || size == m_size)
        return;
    std::copy(m_data + begin, m_data + begin + size, m_data);
    sodium_memzero(m_data + size, m_size - size);
    m_size = size;
}

} // namespace vellumor
