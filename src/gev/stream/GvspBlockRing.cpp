#include "gev/stream/GvspBlockRing.h"

#include <utility>

namespace VX3 {

// Every slot always points to a block of its own, used or not: moves are swaps of pointers.
GvspBlockRing::GvspBlockRing() {
    for (std::size_t i = 0; i < Slots; ++i)
        ring_[i] = &blocks_[i];
}

GvspParserInfo* GvspBlockRing::Find(std::uint32_t blockId) {
    for (std::size_t i = inFlight_; i-- > 0;) // the newest is the likeliest
        if (Slot(i)->blockId == blockId)
            return Slot(i);
    return nullptr;
}

void GvspBlockRing::AddSpare(std::unique_ptr<IImage> image, std::uint32_t bufferId, std::size_t capacity) {
    GvspParserInfo& info = *ring_[tail_];
    info.Free();
    info.image = std::move(image);
    info.bufferId = bufferId;
    info.capacity = capacity;
    tail_ = (tail_ + 1) % Slots;
}

GvspParserInfo& GvspBlockRing::Open(std::uint32_t blockId, const GvspBlockOrder& order) {
    std::size_t place = inFlight_++;
    for (; place > 0 && order.Distance(Slot(place - 1)->blockId, blockId) < 0; --place)
        std::swap(Slot(place), Slot(place - 1));
    return *Slot(place);
}

void GvspBlockRing::Close(GvspParserInfo& info) {
    std::size_t place = 0;
    while (place < inFlight_ && Slot(place) != &info)
        ++place;
    if (place == inFlight_)
        return;
    for (; place + 1 < inFlight_; ++place)
        std::swap(Slot(place), Slot(place + 1));
    --inFlight_;
    info.Free();
}

std::unique_ptr<IImage> GvspBlockRing::PopHead() {
    GvspParserInfo& info = *Slot(0);
    std::unique_ptr<IImage> image = std::move(info.image);
    info.Free();
    head_ = (head_ + 1) % Slots;
    --inFlight_;
    return image;
}

void GvspBlockRing::DropSpares() {
    while (HasSpare()) {
        tail_ = (tail_ + Slots - 1) % Slots;
        ring_[tail_]->image.reset();
        ring_[tail_]->Free();
    }
}

} // namespace VX3
