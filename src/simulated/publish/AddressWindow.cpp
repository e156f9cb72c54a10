#include "simulated/publish/AddressWindow.h"

#include <algorithm>

namespace VX3 {

namespace {

bool Holds(std::uint64_t start, std::uint64_t size, std::uint64_t address, std::size_t count) {
    return address >= start && address - start <= size && count <= size - (address - start);
}

} // namespace

std::optional<std::int64_t> AddressWindow::ShiftOf(std::uint64_t cameraAddress) {
    if (cameraAddress < Near)
        return Base;
    const std::uint64_t page = cameraAddress / PageSize;
    const auto known = std::find(pages_.begin(), pages_.end(), page);
    const auto index = static_cast<std::size_t>(known - pages_.begin());
    if (known == pages_.end()) {
        if (pages_.size() == MostPages)
            return std::nullopt;
        pages_.push_back(page);
    }
    // Sums of addresses wrap; the difference is right even where it does not fit.
    return static_cast<std::int64_t>(Pages + index * PageSize - page * PageSize);
}

AddressWindow::Route AddressWindow::Find(std::uint32_t address, std::size_t size) const {
    if (Holds(0, ServerEnd, address, size))
        return {Place::Server, address};
    if (Holds(ServerEnd, Base - ServerEnd, address, size))
        return {Place::Camera, address};
    if (Holds(Base, Near, address, size))
        return {Place::Camera, address - Base};
    if (Holds(Description, Pages - Description, address, size))
        return {Place::Description, address - Description};
    if (address < Pages)
        return {};
    const std::uint64_t page = (address - Pages) / PageSize;
    const std::uint64_t offset = (address - Pages) % PageSize;
    if (page >= pages_.size() || !Holds(0, PageSize, offset, size))
        return {};
    return {Place::Camera, pages_[static_cast<std::size_t>(page)] * PageSize + offset};
}

} // namespace VX3
