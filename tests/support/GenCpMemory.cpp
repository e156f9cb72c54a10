#include "support/GenCpMemory.h"

#include <stdexcept>
#include <utility>
#include <zip.h>

namespace VX3::Test {

namespace {

constexpr std::uint64_t Manifest = 0x8000;
constexpr std::uint64_t File = 0x100000;

Bytes Zip(const std::string& text) {
    zip_error_t error;
    zip_source_t* target = zip_source_buffer_create(nullptr, 0, 0, &error);
    zip_source_keep(target);
    zip_t* archive = zip_open_from_source(target, ZIP_TRUNCATE, &error);
    zip_file_add(archive, "camera.xml", zip_source_buffer(archive, text.data(), text.size(), 0),
                 ZIP_FL_ENC_UTF_8);
    if (zip_close(archive) != 0 || zip_source_open(target) != 0)
        throw std::runtime_error("no archive");
    zip_source_seek(target, 0, SEEK_END);
    Bytes bytes(static_cast<std::size_t>(zip_source_tell(target)));
    zip_source_seek(target, 0, SEEK_SET);
    zip_source_read(target, bytes.data(), bytes.size());
    zip_source_close(target);
    zip_source_free(target);
    return bytes;
}

} // namespace

GenCpMemory::GenCpMemory(const GenCpCameraData& data) {
    LoadRegisters(data);
    LoadDescription(data);
}

void GenCpMemory::Put(std::uint64_t address, std::uint64_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i)
        bytes_[address + i] = static_cast<std::uint8_t>(value >> (8 * (size - 1 - i)));
}

void GenCpMemory::PutText(std::uint64_t address, const std::string& text, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i)
        bytes_[address + i] = i < text.size() ? static_cast<std::uint8_t>(text[i]) : 0;
}

std::uint64_t GenCpMemory::Get(std::uint64_t address, std::size_t size) const {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i) {
        const auto at = bytes_.find(address + i);
        value = (value << 8) | (at != bytes_.end() ? at->second : 0);
    }
    return value;
}

void GenCpMemory::LoadRegisters(const GenCpCameraData& data) {
    Put(0x0, 0x00010003, 4);
    PutText(0x4, "Works", 64);
    PutText(0x44, data.model, 64);
    PutText(0xC4, "1.0", 64);
    PutText(0x104, "", 64);
    PutText(0x144, data.serial, 64);
    Put(0x1C4,
        (data.hasHeartbeat ? 2U : 0U) | (data.hasSbrm ? 1U << 9 : 0U) | (data.tellsWritten ? 1U << 11 : 0U),
        8);
    Put(0x1CC, data.responseMs, 4);
    Put(0x1D0, Manifest, 8);
    Put(0x1E0, 0, 8);
    if (data.hasHeartbeat) {
        Put(0x1E8, data.heartbeatMs, 4);
        Put(0x204, 0, 4);
    }
    if (data.hasSbrm) {
        Put(0x1D8, Sbrm, 8);
        Put(Sbrm, data.supportedRates, 4);
        for (std::size_t i = 0; i < std::size(Rates); ++i)
            if (Rates[i] == data.rate)
                Put(Sbrm + 4, 1U << i, 4);
    }
    PutText(Scratch, "", 256);
    PutText(ReadOnly, "constant", 64);
    for (const auto& [address, size] : {std::pair<std::uint64_t, std::size_t>{Scratch, 256},
                                        {0x1E0, 8},
                                        {0x1E8, 4},
                                        {0x204, 4},
                                        {Sbrm + 4, 4}})
        for (std::size_t i = 0; i < size; ++i)
            writable_.insert(address + i);
}

void GenCpMemory::LoadDescription(const GenCpCameraData& data) {
    Put(Manifest, data.description.empty() ? 0 : 1, 8);
    if (data.description.empty())
        return;
    const Bytes file =
        data.zipped ? Zip(data.description) : Bytes(data.description.begin(), data.description.end());
    Put(Manifest + 8, 0x01020003, 4);
    Put(Manifest + 12, data.zipped ? 0x01010400 : 0x01010000, 4);
    Put(Manifest + 16, File, 8);
    Put(Manifest + 24, file.size(), 8);
    for (std::size_t i = 0; i < 40; ++i)
        bytes_[Manifest + 32 + i] = i < data.hash.size() ? data.hash[i] : 0;
    for (std::size_t i = 0; i < file.size(); ++i)
        bytes_[File + i] = file[i];
}

std::uint16_t GenCpMemory::Read(std::uint64_t address, std::size_t size, Bytes& data) const {
    for (std::size_t i = 0; i < size; ++i) {
        const auto byte = bytes_.find(address + i);
        if (byte == bytes_.end())
            return 0x8003;
        data.push_back(byte->second);
    }
    return 0;
}

std::uint16_t GenCpMemory::Write(std::uint64_t address, const Bytes& data) {
    for (std::size_t i = 0; i < data.size(); ++i)
        if (writable_.count(address + i) == 0)
            return bytes_.count(address + i) != 0 ? 0x8004 : 0x8003;
    for (std::size_t i = 0; i < data.size(); ++i)
        bytes_[address + i] = data[i];
    return 0;
}

} // namespace VX3::Test
