// What this process knows of each serial port from round to round: the rate its device answered at, the rate
// that is next in turn, and what of the device's name was read before the time was up. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace CLProtocol {

class PortMemory {
public:
    struct Entry {
        std::uint32_t lastRate = 0; // at which it answered last; 0: at none yet
        bool othersFirst = false;   // it did not when asked there
        std::size_t nextRate = 0;   // index of the rate that is next in turn
        bool hasModel = false;
        std::string model;
    };

    static PortMemory& Instance();

    Entry Get(const std::string& port) const;
    void Set(const std::string& port, Entry entry);
    // A device that was connected is found at this rate.
    void Expect(const std::string& port, std::uint32_t rate);

private:
    mutable std::mutex mutex_;
    std::map<std::string, Entry> entries_;
};

} // namespace CLProtocol
