// Fetches a device's description over its serial line: manifest table, the file's bytes, unzipped where it is
// packed. Throws PortError.
#pragma once

#include "platform/clprotocol/GenCpLink.h"
#include "platform/clprotocol/Manifest.h"

#include <string>
#include <vector>

namespace CLProtocol {

class DescriptionFetch {
public:
    // Longer ones would take hours, and are lies.
    static constexpr std::uint64_t MaxStored = 4U << 20;
    static constexpr std::uint64_t MaxEntries = 32;

    explicit DescriptionFetch(GenCpLink& link) : link_(link) {}

    // The best first.
    std::vector<ManifestEntry> Entries();
    // As XML. What does not match its hash is fetched all the same: every packet of it has a checksum, and
    // hashes of real devices are wrong. `note` says so.
    std::string Text(const ManifestEntry& entry, std::string& note);
    // "model_1.2.3", in characters that a file name may have.
    static std::string IdOf(const ManifestEntry& entry, const std::string& model);

private:
    GenCpLink& link_;
};

} // namespace CLProtocol
