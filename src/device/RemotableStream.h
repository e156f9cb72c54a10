// Makes two users share one stream: both get the same images of one acquisition. A transport's stream derives
// from RemotableStream<Base> (Base: StreamAbs or the transport's stream without it) and does nothing for it.
//
// Start, Stop, Open and Close are the local user's. Open and Start join what the remote user has begun; Stop
// and Close leave it running for him. MUserStart and MUserStop, and Pause and Restart, are the operations
// underneath: a stop there ends acquisition for both, and Restart takes it up for whoever has started it.
#pragma once

#include "device/IRemotableStream.h"
#include "device/StreamAbs.h"
#include "device/StreamUsers.h"
#include "device/TransitionGate.h"
#include "vx3/core/LastFailure.h"

#include <memory>
#include <utility>

namespace VX3 {

template <typename Base>
class RemotableStream : public Base, public IRemotableStream {
public:
    using Base::Base;

    StatusCode Open(unsigned int bufferCount, std::shared_ptr<IImagePool> pool) override;
    StatusCode Start(ImageCallback callback, void* userData, unsigned int frames,
                     std::shared_ptr<IImagePool> pool) override;
    StatusCode Stop() override;
    StatusCode Close() override;
    StatusCode Pause() override { return MUserStop(StreamUsers::Every); }
    StatusCode Restart() override { return MUserStart({}, nullptr, 0, nullptr, StreamUsers::Every); }
    // Stops for both users, who are then forgotten.
    StatusCode StopA() override;
    bool IsStreamingLocally() const override { return users_->HasStarted(StreamUsers::Local); }

    StatusCode StartRemotely(ImageCallback callback, void* userData, unsigned int frames,
                             std::shared_ptr<IImagePool> pool) override;
    StatusCode StopRemotely() override;
    bool IsStreamingRemotely() const override { return users_->HasStarted(StreamUsers::Remote); }

    // `user`: 0 local, 1 remote; 2 starts the stream again for those who have started it, with what they
    // gave. A running stream is joined. NotFound: no such user, or he has started it already. WrongState:
    // user 2, and nobody has started it.
    [[nodiscard]] StatusCode MUserStart(ImageCallback callback, void* userData, unsigned int frames,
                                        std::shared_ptr<IImagePool> pool, unsigned int user)
        VX3_EXCLUDES(usersMutex_);
    // Stops the stream for both; the other user stays registered for a Restart. NotFound: no such user, he
    // had not started it, or it does not run.
    StatusCode MUserStop(unsigned int user) VX3_EXCLUDES(usersMutex_);

protected:
    // The user leaves; acquisition ends only with the last.
    StatusCode LeaveP(unsigned int user) VX3_EXCLUDES(usersMutex_);

private:
    StatusCode Run() VX3_REQUIRES(usersMutex_);
    void CloseForRemote();

    const std::shared_ptr<StreamUsers> users_ = std::make_shared<StreamUsers>();
    TransitionGate opening_;
    Mutex usersMutex_; // one start or stop at a time
};

// ---- open and close ----

template <typename Base>
StatusCode RemotableStream<Base>::Open(unsigned int bufferCount, std::shared_ptr<IImagePool> pool) {
    const TransitionGate::Pass pass(opening_);
    if (!pass)
        return Status::AlreadyOpen;
    if (this->IsOpened() && !users_->HasOpen(StreamUsers::Local)) { // the remote user has opened it
        users_->SetOpen(StreamUsers::Local, true);
        return Status::Ok;
    }
    const StatusCode status = Base::Open(bufferCount, std::move(pool));
    users_->SetOpen(StreamUsers::Local, this->IsOpened());
    return status;
}

template <typename Base>
StatusCode RemotableStream<Base>::Close() {
    const TransitionGate::Pass pass(opening_);
    if (!pass)
        return Status::StillStreaming;
    if (!users_->HasOpen(StreamUsers::Remote)) {
        const StatusCode status = Base::Close();
        if (!Failed(status))
            users_->Clear();
        return status;
    }
    if (!users_->HasOpen(StreamUsers::Local))
        return Status::NotOpen;
    if (users_->HasStarted(StreamUsers::Local) && this->IsStreaming())
        return Status::StillStreaming;
    users_->SetOpen(StreamUsers::Local, false);
    users_->Dismiss(StreamUsers::Local);
    return Status::Ok;
}

template <typename Base>
void RemotableStream<Base>::CloseForRemote() {
    const TransitionGate::Pass pass(opening_);
    users_->SetOpen(StreamUsers::Remote, false);
    users_->Dismiss(StreamUsers::Remote);
    const bool local = users_->HasOpen(StreamUsers::Local) || users_->HasStarted(StreamUsers::Local);
    if (pass && !local && this->IsOpened())
        Base::Close();
}

// ---- start and stop ----

template <typename Base>
StatusCode RemotableStream<Base>::MUserStart(ImageCallback callback, void* userData, unsigned int frames,
                                             std::shared_ptr<IImagePool> pool, unsigned int user) {
    if (user > StreamUsers::Every)
        return Status::NotFound;
    MutexLock lock(usersMutex_);
    if (user == StreamUsers::Every) {
        if (!users_->HasStarted(user))
            return SetLastFailure(Status::WrongState, this->Name() + ": nobody has started it");
    } else if (!users_->Enter(user, {std::move(callback), userData, frames, std::move(pool)})) {
        return SetLastFailure(Status::NotFound, this->Name() + ": this user has started it already");
    }
    if (this->IsStreaming())
        return Status::Ok;
    const StatusCode status = Run();
    if (Failed(status) && user != StreamUsers::Every)
        users_->Leave(user);
    return status;
}

template <typename Base>
StatusCode RemotableStream<Base>::Run() {
    const StreamUsers::Request request = users_->Remaining();
    return Base::Start(StreamUsers::Dispatcher(users_), nullptr, request.frames, request.pool);
}

template <typename Base>
StatusCode RemotableStream<Base>::MUserStop(unsigned int user) {
    if (user > StreamUsers::Every)
        return Status::NotFound;
    MutexLock lock(usersMutex_);
    if (user != StreamUsers::Every && !users_->Leave(user))
        return Status::NotFound;
    return this->IsStreaming() ? Base::Stop() : Status::NotFound;
}

template <typename Base>
StatusCode RemotableStream<Base>::LeaveP(unsigned int user) {
    MutexLock lock(usersMutex_);
    const bool had = users_->Leave(user);
    if (users_->HasStarted(StreamUsers::Every))
        return had ? Status::Ok : Status::NotFound;
    return Base::Stop();
}

template <typename Base>
StatusCode RemotableStream<Base>::Start(ImageCallback callback, void* userData, unsigned int frames,
                                        std::shared_ptr<IImagePool> pool) {
    StatusCode refused = Status::Ok;
    if (!users_->HasOpen(StreamUsers::Local))
        refused = Status::NotOpen;
    else if (users_->HasStarted(StreamUsers::Local) && this->IsStreaming())
        refused = Status::AlreadyStreaming;
    if (Failed(refused))
        return SetLastFailure(refused, this->Name() + ": " + StatusText(refused));
    users_->Leave(StreamUsers::Local); // of a run that has ended, or pauses
    return MUserStart(std::move(callback), userData, frames, std::move(pool), StreamUsers::Local);
}

template <typename Base>
StatusCode RemotableStream<Base>::Stop() {
    const StatusCode status = LeaveP(StreamUsers::Local);
    return status == Status::NotFound ? Status::Ok : status;
}

template <typename Base>
StatusCode RemotableStream<Base>::StopA() {
    MutexLock lock(usersMutex_);
    users_->Clear();
    return Base::StopA();
}

// ---- the remote user ----

template <typename Base>
StatusCode RemotableStream<Base>::StartRemotely(ImageCallback callback, void* userData, unsigned int frames,
                                                std::shared_ptr<IImagePool> pool) {
    StatusCode status = Status::Ok;
    {
        const TransitionGate::Pass pass(opening_);
        if (!pass)
            return Status::WrongState;
        if (!this->IsOpened())
            status = Base::Open(frames, pool);
        users_->SetOpen(StreamUsers::Remote, this->IsOpened());
    }
    const bool fresh = !users_->HasStarted(StreamUsers::Remote);
    if (!Failed(status))
        status = MUserStart(std::move(callback), userData, frames, std::move(pool), StreamUsers::Remote);
    if (Failed(status) && fresh)
        CloseForRemote();
    return status;
}

template <typename Base>
StatusCode RemotableStream<Base>::StopRemotely() {
    const StatusCode status = MUserStop(StreamUsers::Remote);
    CloseForRemote();
    return status;
}

} // namespace VX3
