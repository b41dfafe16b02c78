#pragma once

#include "accounts/SharedIdentity.h"
#include "store/FileStore.h"

#include <string>

namespace vellumor {

// The file of identities that this program and its sibling both write: accounts.json in the shared
// folder. Records and keys that only the sibling knows are kept. Holds no state; callable from any
// thread.
class SharedAccountsStore {
public:
    // Makes the file's folder. `files` outlives the store.
    SharedAccountsStore(const FileStore& files, std::string fileURL);

    // Empty when the file is missing, broken or of a newer version. Malformed records are left out.
    [[nodiscard]] SharedIdentities load() const;

    // Writes this program's view into the file; never deletes a record.
    FileStore::UpdateOutcome save(const SharedIdentities& identities) const;

    // What load() gives, of bytes already read; `malformed` is how many records were left out.
    struct Decoded {
        SharedIdentities identities;
        int malformed = 0;
    };
    [[nodiscard]] static Decoded decode(std::string_view bytes);

private:
    const FileStore& m_files;
    std::string m_fileURL;
};

} // namespace vellumor
