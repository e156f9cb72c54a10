#include "support/GenCpCamera.h"

#include "support/GenCpPackets.h"

#include <algorithm>
#include <asm/termbits.h>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace VX3::Test {

using GenCpPackets::Number;

namespace {

const Bytes Noise{0x41, 0x01, 0x00, 0x0D, 0x01, 0x00, 0xFF};

// Not the library's own settings, so that it is seen when they are left behind.
void Prepare(int slave) {
    termios2 settings{};
    ioctl(slave, TCGETS2, &settings);
    settings.c_iflag = 0;
    settings.c_oflag = 0;
    settings.c_lflag = 0;
    settings.c_cflag = CS7 | CREAD | BOTHER;
    settings.c_ispeed = settings.c_ospeed = 4800;
    ioctl(slave, TCSETS2, &settings);
}

} // namespace

GenCpCamera::GenCpCamera(GenCpCameraData data) : data_(std::move(data)), memory_(data_), rate_(data_.rate) {
    master_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    char name[128];
    if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0 ||
        ptsname_r(master_, name, sizeof(name)) != 0)
        throw std::runtime_error("no pseudo terminal");
    port_ = name;
    slave_ = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    Prepare(slave_);
    lastAccess_ = Clock::now();
    thread_ = std::thread([this] { Run(); });
}

GenCpCamera::~GenCpCamera() {
    run_ = false;
    thread_.join();
    Cut();
}

// What tests ask -------------------------------------------------------------------------------------------

void GenCpCamera::Set(const GenCpFaults& faults) {
    const std::lock_guard<std::mutex> lock(mutex_);
    faults_ = faults;
}

std::vector<GenCpCommand> GenCpCamera::TakeCommands() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::exchange(commands_, {});
}

std::uint32_t GenCpCamera::Rate() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return rate_;
}

std::uint32_t GenCpCamera::Register32(std::uint64_t address) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<std::uint32_t>(memory_.Get(address, 4));
}

void GenCpCamera::Unplug() {
    unplug_ = true;
}

// The line -------------------------------------------------------------------------------------------------

void GenCpCamera::Cut() {
    for (int* fd : {&slave_, &master_}) {
        if (*fd >= 0)
            close(*fd);
        *fd = -1;
    }
}

void GenCpCamera::Run() {
    while (run_) {
        pollfd wait{master_, POLLIN, 0};
        const int ready = poll(&wait, 1, 2);
        const std::lock_guard<std::mutex> lock(mutex_);
        if (unplug_)
            Cut();
        if (master_ < 0)
            return;
        Tick();
        if (ready > 0 && (wait.revents & POLLIN) != 0)
            Receive();
        while (master_ >= 0 && TakePacket()) {
        }
    }
}

void GenCpCamera::BackToDefaults() {
    if (memory_.Get(0x204, 4) != 0)
        memory_.Put(0x204, 0, 4);
    rate_ = 9600;
    if (data_.hasSbrm)
        memory_.Put(Sbrm + 4, 1, 4);
}

void GenCpCamera::Tick() {
    const auto now = Clock::now();
    if (awaitsConfirmation_ && now > confirmBy_) {
        awaitsConfirmation_ = false;
        rate_ = oldRate_;
    }
    if (data_.hasHeartbeat && (memory_.Get(0x1E0, 8) & 1) != 0 && memory_.Get(0x204, 4) == 1 &&
        now - lastAccess_ > std::chrono::milliseconds(memory_.Get(0x1E8, 4)))
        BackToDefaults();
}

void GenCpCamera::Receive() {
    Bytes bytes(4096);
    const ssize_t got = read(master_, bytes.data(), bytes.size());
    if (got <= 0)
        return;
    termios2 host{};
    ioctl(master_, TCGETS2, &host);
    if (host.c_ospeed != rate_) {
        swallowed_ += static_cast<std::size_t>(got);
        arrived_.clear();
        Send(Noise);
        return;
    }
    arrived_.insert(arrived_.end(), bytes.begin(), bytes.begin() + got);
}

void GenCpCamera::Send(const Bytes& bytes) {
    if (faults_.slowWire)
        std::this_thread::sleep_for(std::chrono::microseconds(bytes.size() * 10000000ULL / rate_));
    for (std::size_t done = 0; done < bytes.size() && master_ >= 0;) {
        const ssize_t sent = write(master_, bytes.data() + done, bytes.size() - done);
        if (sent <= 0)
            return;
        done += static_cast<std::size_t>(sent);
    }
}

// Commands -------------------------------------------------------------------------------------------------

// By the letter: preamble, the header's checksum, then as many bytes as it says.
bool GenCpCamera::TakePacket() {
    while (arrived_.size() >= 16) {
        const bool header = arrived_[0] == 1 && arrived_[1] == 0 &&
                            Number(arrived_, 2, 2) == GenCpPackets::Sum(arrived_, 6, 16);
        if (!header) {
            arrived_.erase(arrived_.begin());
            continue;
        }
        const std::size_t size = 16 + Number(arrived_, 12, 2);
        if (arrived_.size() < size)
            return false;
        const Bytes packet(arrived_.begin(), arrived_.begin() + static_cast<long>(size));
        arrived_.erase(arrived_.begin(), arrived_.begin() + static_cast<long>(size));
        if (Number(packet, 4, 2) == GenCpPackets::Sum(packet, 6, size))
            Execute(packet);
        return true;
    }
    return false;
}

void GenCpCamera::Execute(const Bytes& packet) {
    GenCpCommand command;
    command.flags = static_cast<std::uint16_t>(Number(packet, 8, 2));
    command.command = static_cast<std::uint16_t>(Number(packet, 10, 2));
    command.id = static_cast<std::uint16_t>(Number(packet, 14, 2));
    command.address = packet.size() >= 24 ? Number(packet, 16, 8) : 0;
    command.rate = rate_;
    commands_.push_back(command);
    lastAccess_ = Clock::now();
    if (faults_.silent || faults_.dropCommands-- > 0)
        return;
    faults_.dropCommands = std::max(faults_.dropCommands, 0);
    if (command.id != 0 && command.id == lastId_) { // the same again: not executed a second time
        if (!lastAnswer_.empty())
            Reply(lastAnswer_, command);
        return;
    }
    lastId_ = command.id;
    lastAnswer_ = Answered(packet, command);
    if (!lastAnswer_.empty())
        Reply(lastAnswer_, command);
}

Bytes GenCpCamera::Answered(const Bytes& packet, const GenCpCommand& command) {
    const auto refuse = [&](std::uint16_t status) {
        return GenCpPackets::Answer(status, command.command | 1U, command.id, {});
    };
    if (faults_.busy > 0) {
        --faults_.busy;
        return refuse(0x8007);
    }
    if (command.command == 0x0800 && packet.size() == 28)
        return ReadAnswer(packet, command);
    if (command.command == 0x0802 && packet.size() > 24)
        return command.id == 0 ? refuse(0x8002) : WriteAnswer(packet, command);
    return refuse(0x8001);
}

Bytes GenCpCamera::ReadAnswer(const Bytes& packet, const GenCpCommand& command) {
    Bytes data;
    if (const std::uint16_t status = memory_.Read(command.address, Number(packet, 26, 2), data))
        return GenCpPackets::Answer(status, 0x0801, command.id, {});
    if (faults_.shortAnswers > 0 && !data.empty()) {
        --faults_.shortAnswers;
        data.pop_back();
    }
    return GenCpPackets::Answer(0, 0x0801, command.id, data);
}

Bytes GenCpCamera::WriteAnswer(const Bytes& packet, const GenCpCommand& command) {
    const Bytes data(packet.begin() + 24, packet.end());
    if (awaitsConfirmation_ && command.address == Sbrm + 4 && faults_.forgetConfirmation)
        return {};
    const std::uint16_t status = WriteRegisters(command.address, data);
    Bytes payload;
    if (status == 0 && data_.tellsWritten)
        GenCpPackets::Append(payload, data.size(), 4);
    return GenCpPackets::Answer(status, 0x0803, command.id, payload);
}

std::uint16_t GenCpCamera::WriteRegisters(std::uint64_t address, const Bytes& data) {
    if (address == Sbrm + 4 && faults_.refuseRate)
        return 0x8002;
    if (address == 0x204 && faults_.refuseControl)
        return 0x8006;
    return memory_.Write(address, data);
}

// After the answer has gone out at the old rate.
void GenCpCamera::ChangeRate(std::uint32_t bit) {
    for (std::size_t i = 0; i < std::size(GenCpMemory::Rates); ++i) {
        if (bit != 1U << i)
            continue;
        if (awaitsConfirmation_ && GenCpMemory::Rates[i] == rate_) {
            awaitsConfirmation_ = false;
        } else if (GenCpMemory::Rates[i] != rate_) {
            oldRate_ = rate_;
            rate_ = GenCpMemory::Rates[i];
            awaitsConfirmation_ = true;
            confirmBy_ = Clock::now() + std::chrono::milliseconds(250);
        }
    }
}

void GenCpCamera::Reply(const Bytes& answer, const GenCpCommand& command) {
    const auto uses = [](int& count) { return count > 0 && count-- > 0; };
    const auto pause = [this](int ms) {
        for (const auto end = Clock::now() + std::chrono::milliseconds(ms); run_ && Clock::now() < end;)
            std::this_thread::sleep_for(
                std::min<Clock::duration>(end - Clock::now(), std::chrono::milliseconds(20)));
    };
    if (uses(faults_.noise))
        Send(Noise);
    if (uses(faults_.stale))
        Send(GenCpPackets::Answer(0, command.command | 1U, static_cast<std::uint16_t>(command.id - 1),
                                  Bytes(4)));
    while (uses(faults_.pending)) {
        Bytes payload;
        GenCpPackets::Append(payload, static_cast<std::uint64_t>(faults_.pendingMs), 4);
        Send(GenCpPackets::Answer(0, 0x0805, command.id, payload));
        pause(faults_.pendingMs - 20);
    }
    if (uses(faults_.late))
        pause(faults_.lateMs);
    Bytes bytes = answer;
    if (uses(faults_.flipHeaders))
        bytes[12] ^= 0x10;
    else if (uses(faults_.flipPayloads))
        bytes.back() ^= 0x01;
    if (faults_.vanishAfter >= 0) {
        bytes.resize(std::min<std::size_t>(bytes.size(), static_cast<std::size_t>(faults_.vanishAfter)));
        Send(bytes);
        pause(20);
        Cut();
        return;
    }
    const bool dropped = uses(faults_.dropAnswers);
    const bool bytewise = !dropped && uses(faults_.singleBytes);
    for (std::size_t i = 0; bytewise && i < bytes.size(); ++i) {
        Send({bytes[i]});
        pause(1);
    }
    if (!dropped && !bytewise)
        Send(bytes);
    if (command.command != 0x0802 || Number(answer, 8, 2) != 0)
        return;
    if (command.address == Sbrm + 4)
        ChangeRate(static_cast<std::uint32_t>(memory_.Get(Sbrm + 4, 4)));
    if (command.address == 0x204 && memory_.Get(0x204, 4) == 0)
        BackToDefaults();
}

} // namespace VX3::Test
