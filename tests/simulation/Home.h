#pragma once

#include "base/Instant.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellumor::simulation {

// A person's home with the config directories of several accounts, and Claude Code at work in them:
// real folders and files. Each token lives for eight hours.
class Home {
public:
    static constexpr std::chrono::hours tokenLife{8};

    Home();
    Home(const Home&) = delete;
    Home& operator=(const Home&) = delete;
    ~Home();

    [[nodiscard]] const std::string& path() const { return m_path; }
    [[nodiscard]] int size() const { return static_cast<int>(m_owners.size()); }

    int add(Instant now);
    // Claude Code is used, or is run to renew the token.
    void renew(int account, Instant now);
    void signOut(int account);
    // The config directory goes elsewhere, and comes back as it was.
    void takeAway(int account);
    void bringBack(int account);

    [[nodiscard]] bool isThere(int account) const { return at(account).isThere; }
    [[nodiscard]] bool isSignedIn(int account) const { return at(account).isSignedIn; }
    [[nodiscard]] Instant expiresAt(int account) const { return at(account).expiresAt; }
    [[nodiscard]] std::string configDir(int account) const;
    // Empty after a sign-out.
    [[nodiscard]] std::string token(int account) const;

    // Whose token it was made for; -1 when it is nobody's.
    [[nodiscard]] static int ownerOf(std::string_view token);
    // Whose it is, if it is the present one and still valid.
    [[nodiscard]] std::optional<int> accountOf(std::string_view token, Instant now) const;
    // The account with this config directory.
    [[nodiscard]] std::optional<int> accountIn(const std::string& configDir) const;

private:
    struct Owner {
        int generation = 0;
        Instant expiresAt{};
        bool isThere = true;
        bool isSignedIn = true;
    };

    [[nodiscard]] const Owner& at(int account) const
    {
        return m_owners.at(static_cast<std::size_t>(account));
    }
    [[nodiscard]] Owner& at(int account) { return m_owners.at(static_cast<std::size_t>(account)); }
    void put(const std::string& name, const std::string& bytes) const;
    void writeCredentials(int account) const;

    std::string m_path; // a folder of its own, gone at the end
    std::vector<Owner> m_owners;
};

} // namespace vellumor::simulation
