#pragma once

#include <QByteArray>

#include <cstring>
#include <string_view>

namespace vellumor {

// The value of one request's Authorization header, wiped in the end. Qt's copies of the value share
// these bytes, so they are wiped too.
class BearerHeader {
public:
    explicit BearerHeader(std::string_view token)
    {
        constexpr std::string_view scheme = "Bearer ";
        // All at once, since growing would leave a piece of the token behind.
        m_value.reserve(static_cast<qsizetype>(scheme.size()) +
                        static_cast<qsizetype>(token.size()));
        m_value.append(scheme.data(), static_cast<qsizetype>(scheme.size()));
        m_value.append(token.data(), static_cast<qsizetype>(token.size()));
    }
    BearerHeader(const BearerHeader&) = delete;
    BearerHeader& operator=(const BearerHeader&) = delete;
    ~BearerHeader() { wipe(m_value); }

    // Forgets the bytes without touching them: for a request that was broken off, whose sending
    // thread may read them yet.
    void leave() { m_value = QByteArray(); }

    [[nodiscard]] const QByteArray& value() const { return m_value; }

    // True for what may stand behind "Bearer ": one or more visible ASCII characters. Anything else
    // could end the header and begin another.
    [[nodiscard]] static bool isSendable(std::string_view token)
    {
        for (const char c : token) {
            if (c < 0x21 || c > 0x7E)
                return false;
        }
        return !token.empty();
    }

private:
    // Through constData(), since data() would give a copy that nobody else reads.
    static void wipe(const QByteArray& bytes)
    {
        ::explicit_bzero(const_cast<char*>(bytes.constData()),
                         static_cast<std::size_t>(bytes.size()));
    }

    QByteArray m_value;
};

} // namespace vellumor
