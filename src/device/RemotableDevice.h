// Makes two users share one device: the first who connects makes the real connection, the last who leaves
// ends it, and the other's streams go on. A transport's camera derives from RemotableDevice<Base> (Base: its
// camera without it) and does nothing for it; its streams are RemotableStream.
//
// Connect and DisConnect are the local user's and answer as any device's do; MUserConnect and MUSerDisConnect
// are the operations underneath and tell more.
#pragma once

#include "device/DeviceAbs.h"
#include "device/IRemotableDevice.h"
#include "device/IRemotableStream.h"
#include "device/StreamUsers.h"
#include "device/TransitionGate.h"
#include "vx3/core/LastFailure.h"
#include "vx3/core/Logger.h"

#include <array>
#include <atomic>

namespace VX3 {

template <typename Base>
class RemotableDevice : public Base, public IRemotableDevice {
public:
    using Base::Base;

    using Base::Connect;
    StatusCode Connect(DeviceAccess access) override {
        const StatusCode status = MUserConnect(StreamUsers::Local, access);
        return status == Status::AlreadyConnected ? Status::Ok : status;
    }
    StatusCode DisConnect() override {
        const StatusCode status = LeaveLocally();
        return status == Status::NotConnected ? Status::Ok : status;
    }
    bool IsConnectedLocally() const override { return users_[StreamUsers::Local]; }

    StatusCode ConnectRemotely() override { return MUserConnect(StreamUsers::Remote, DeviceAccess::Control); }
    StatusCode DisConnectRemotely() override;
    bool IsConnectedRemotely() const override { return users_[StreamUsers::Remote]; }

    // The end for both users, whoever is connected.
    StatusCode DisConnectA(); // NOLINT(bugprone-virtual-near-miss): another one than DisConnectP

    // `user`: 0 local, 1 remote. AlreadyConnected: this one is. WrongState: the device is connected with
    // another access. DeviceLost: the other user still holds a connection whose camera is gone.
    [[nodiscard]] StatusCode MUserConnect(unsigned int user, DeviceAccess access = DeviceAccess::Control);
    // NotConnected: nobody is, or not the local user; AlreadyConnected: not the remote user.
    StatusCode MUSerDisConnect(unsigned int user);

protected:
    // DisConnect of the local user: his streams, then himself.
    StatusCode LeaveLocally();

private:
    void RestartStreams();

    TransitionGate sharing_; // one user comes or goes at a time
    std::array<std::atomic<bool>, StreamUsers::Every> users_{};
};

template <typename Base>
StatusCode RemotableDevice<Base>::MUserConnect(unsigned int user, DeviceAccess access) {
    const TransitionGate::Pass pass(sharing_);
    if (!pass || user >= StreamUsers::Every)
        return pass ? Status::NotFound : Status::WrongState;
    if (this->IsConnected()) {
        if (access != this->Access())
            return SetLastFailure(Status::WrongState,
                                  this->Name() + " is connected with another access already");
        if (users_[user].exchange(true))
            return SetLastFailure(Status::AlreadyConnected,
                                  this->Name() + ": this user is connected already");
        if (this->DeviceState() != DEVICE_STATE::Lost)
            return Status::Ok;
        users_[user] = false;
        return SetLastFailure(Status::DeviceLost,
                              this->Name() + " is lost, and its other user has not let it go yet");
    }
    const StatusCode status = Base::Connect(access);
    if (!Failed(status))
        users_[user] = true;
    return status;
}

template <typename Base>
StatusCode RemotableDevice<Base>::MUSerDisConnect(unsigned int user) {
    const TransitionGate::Pass pass(sharing_);
    if (!pass || user >= StreamUsers::Every)
        return pass ? Status::NotFound : Status::WrongState;
    if (!this->IsConnected())
        return Status::NotConnected;
    if (!users_[user].exchange(false))
        return user == StreamUsers::Local ? Status::NotConnected : Status::AlreadyConnected;
    if (!users_[StreamUsers::Remote - user])
        return Base::DisConnect();
    if (user == StreamUsers::Local)
        for (const auto& stream : this->Streams())
            stream->Close(); // for him alone
    RestartStreams();
    return Status::Ok;
}

template <typename Base>
StatusCode RemotableDevice<Base>::LeaveLocally() {
    if (users_[StreamUsers::Local])
        for (const auto& stream : this->Streams())
            stream->Stop();
    return MUSerDisConnect(StreamUsers::Local);
}

template <typename Base>
StatusCode RemotableDevice<Base>::DisConnectRemotely() {
    if (users_[StreamUsers::Remote])
        for (const auto& stream : this->Streams())
            if (auto* shared = dynamic_cast<IRemotableStream*>(stream.get()))
                shared->StopRemotely();
    return MUSerDisConnect(StreamUsers::Remote);
}

template <typename Base> // NOLINTNEXTLINE(bugprone-virtual-near-miss): see above
StatusCode RemotableDevice<Base>::DisConnectA() {
    const TransitionGate::Pass pass(sharing_);
    if (!pass)
        return Status::WrongState;
    for (auto& user : users_)
        user = false;
    return Base::DisConnect();
}

template <typename Base>
void RemotableDevice<Base>::RestartStreams() {
    for (const auto& stream : this->Streams()) {
        const auto* shared = dynamic_cast<IRemotableStream*>(stream.get());
        if (shared == nullptr || (!shared->IsStreamingRemotely() && !stream->IsStreamingLocally()))
            continue;
        const StatusCode status = stream->Restart();
        if (Failed(status) && status != Status::WrongState) // then he has just stopped it himself
            VxLoggerLog(LogLevel::Error, "SDK", "%s: its stream does not go on for the other user: %s",
                        this->Name().c_str(), StatusText(status).c_str());
    }
}

} // namespace VX3
