#include "platform/clprotocol/SerialPort.h"

#include "platform/clprotocol/GenCp.h"
#include "platform/clprotocol/PortError.h"

#include <algorithm>
#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace CLProtocol {

namespace {

// A receiver follows rates that differ by less than half a bit in ten.
constexpr std::uint32_t RateToleranceDivisor = 40;

bool IsNear(std::uint32_t actual, std::uint32_t wanted) {
    const std::uint32_t off = actual > wanted ? actual - wanted : wanted - actual;
    return off <= wanted / RateToleranceDivisor;
}

PortError Unusable(const std::string& path, const std::string& why) {
    return {Failure::Unusable, path + ": " + why};
}

PortError InUse(const std::string& path, const std::string& by) {
    return {Failure::InUse, path + ": in use by " + by};
}

} // namespace

class SerialPort::Descriptor {
public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor() { ::close(fd_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Get() const { return fd_; }

private:
    const int fd_;
};

SerialPort::SerialPort(const std::string& path) : path_(path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0)
        throw Unusable(path, std::generic_category().message(errno));
    if (!S_ISCHR(info.st_mode))
        throw Unusable(path, "not a serial port");
    claim_ = std::make_unique<PortRegister::Claim>(info.st_rdev);
    if (!*claim_)
        throw InUse(path, "this program");
    const int fd = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0 && errno == EBUSY)
        throw InUse(path, "another program");
    if (fd < 0)
        throw Unusable(path, std::generic_category().message(errno));
    fd_ = std::make_unique<Descriptor>(fd);
    Lock();
    MakeRaw();
}

// Root opens ports that are held exclusively, so that is asked for, too.
void SerialPort::Lock() {
    int exclusive = 0;
    if (::ioctl(fd_->Get(), TIOCGEXCL, &exclusive) == 0 && exclusive != 0)
        throw InUse(path_, "another program");
    if (::flock(fd_->Get(), LOCK_EX | LOCK_NB) != 0)
        throw InUse(path_, "another program, which has locked it");
}

void SerialPort::MakeRaw() {
    auto found = std::make_unique<termios2>();
    if (::ioctl(fd_->Get(), TCGETS2, found.get()) != 0)
        throw Unusable(path_, "not a serial port");
    ::ioctl(fd_->Get(), TIOCEXCL);
    found_ = std::move(found);
    if (!SetBaud(GenCp::FactoryBaud))
        throw Unusable(path_, "cannot be set up for " + std::to_string(GenCp::FactoryBaud) + " baud");
    Discard();
}

SerialPort::~SerialPort() {
    if (!found_)
        return; // it was never ours
    Discard();
    ::ioctl(fd_->Get(), TCSETS2, found_.get());
    ::ioctl(fd_->Get(), TIOCNXCL);
}

bool SerialPort::SetBaud(std::uint32_t rate) {
    termios2 settings = *found_;
    settings.c_iflag = 0;
    settings.c_oflag = 0;
    settings.c_lflag = 0;
    settings.c_cflag &= HUPCL; // the modem lines at the end are the owner's choice
    settings.c_cflag |= CS8 | CREAD | CLOCAL | BOTHER;
    settings.c_ispeed = settings.c_ospeed = rate;
    settings.c_cc[VMIN] = 1; // nothing to read is told from a line that was hung up
    settings.c_cc[VTIME] = 0;
    termios2 actual{};
    if (::ioctl(fd_->Get(), TCSETS2, &settings) == 0 && ::ioctl(fd_->Get(), TCGETS2, &actual) == 0 &&
        IsNear(actual.c_ospeed, rate)) {
        baud_ = rate;
        return true;
    }
    if (baud_ != 0) {
        settings.c_ispeed = settings.c_ospeed = baud_;
        ::ioctl(fd_->Get(), TCSETS2, &settings);
    }
    return false;
}

bool SerialPort::Supports(std::uint32_t rate) {
    const std::uint32_t before = baud_;
    return SetBaud(rate) && SetBaud(before);
}

void SerialPort::Discard() {
    ::ioctl(fd_->Get(), TCFLSH, TCIOFLUSH);
}

SerialPort::Result SerialPort::Wait(short events, Time until) {
    using std::chrono::milliseconds;
    const auto left = std::chrono::ceil<milliseconds>(until - std::chrono::steady_clock::now());
    pollfd wait{fd_->Get(), events, 0};
    const int ready = ::poll(&wait, 1, static_cast<int>(std::clamp<long>(left.count(), 0, 60000)));
    if (ready > 0 && (wait.revents & (POLLERR | POLLNVAL)) != 0)
        return Result::HungUp;
    if (ready > 0 && (wait.revents & events) == 0)
        return Result::HungUp;
    return ready > 0 ? Result::Done : Result::TimedOut;
}

SerialPort::Result SerialPort::Send(VX3::WireBytes bytes, Time until) {
    while (bytes.size != 0) {
        const ssize_t sent = ::write(fd_->Get(), bytes.data, bytes.size);
        if (sent > 0) {
            bytes.data += sent;
            bytes.size -= static_cast<std::size_t>(sent);
            continue;
        }
        if (sent < 0 && errno != EAGAIN && errno != EINTR)
            return Result::HungUp;
        const Result ready = Wait(POLLOUT, until);
        if (ready != Result::Done)
            return ready;
    }
    return Result::Done;
}

SerialPort::Result SerialPort::Receive(VX3::WireRoom room, std::size_t& size, Time until) {
    size = 0;
    const Result ready = Wait(POLLIN, until);
    if (ready != Result::Done)
        return ready;
    const ssize_t got = ::read(fd_->Get(), room.data, room.size);
    if (got < 0 && (errno == EAGAIN || errno == EINTR))
        return Result::TimedOut;
    if (got <= 0)
        return Result::HungUp;
    size = static_cast<std::size_t>(got);
    return Result::Done;
}

} // namespace CLProtocol
