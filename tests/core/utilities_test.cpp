#include "core/NumberText.h"
#include "core/ObjectAbs.h"
#include "core/UniqueFd.h"
#include "support/Threads.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/LastFailure.h"
#include "vx3/core/Status.h"
#include "vx3/core/Utilities.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <set>
#include <thread>

namespace VX3::Test {
namespace {

using Pieces = std::vector<std::string>;

TEST(Miscs, BitFunctionsAtTheirEdges) {
    using Pairs = std::vector<std::pair<unsigned int, unsigned int>>;
    for (const auto& [value, power] :
         Pairs{{0, 0}, {1, 1}, {1000, 1024}, {1U << 31, 1U << 31}, {(1U << 31) + 1, 0}})
        EXPECT_EQ(Miscs::CeilingPower2(value), power) << value;
    for (const auto& [value, zeros] : Pairs{{0, 32}, {1, 31}})
        EXPECT_EQ(Miscs::LeadingZeros(value), zeros) << value;
    for (const auto& [value, place] : Pairs{{0, 32}, {1024, 10}, {0xFFFFFFFF, 31}})
        EXPECT_EQ(Miscs::FirstNotZero(value), place) << value;
    for (const auto& [value, place] : Pairs{{0, 32}, {1, 1}, {1U << 31, 32}})
        EXPECT_EQ(Miscs::LastNotZero(value), place) << value;
}

TEST(Strings, FormatIsCutAndNeverOverruns) {
    EXPECT_EQ(StringFormat("%d-%s", 7, "x"), "7-x");
    EXPECT_EQ(StringFormat("%s", std::string(2000, 'a').c_str()), std::string(511, 'a'));
}

TEST(Strings, SplitKeepsEmptyPiecesButNotAnEmptyTail) {
    EXPECT_EQ(SplitString("a,,b,", ','), (Pieces{"a", "", "b"}));
    EXPECT_EQ(SplitString(",", ','), (Pieces{""}));
    EXPECT_TRUE(SplitString("", ',').empty());
    EXPECT_EQ(SplitStringByColon("Local:x.xml:12"), (Pieces{"Local", "x.xml:12"}));
    EXPECT_EQ(SplitStringByColon(":"), (Pieces{"", ""}));
    EXPECT_EQ(SplitStringByColon("plain"), (Pieces{"plain"}));
}

TEST(Strings, HexadecimalIsAllOrNothing) {
    const std::pair<const char*, std::uint64_t> texts[] = {
        {"1f", 31}, {"aA9", 0xAA9}, {"FFFFFFFFFFFFFFFF", UINT64_MAX}, {"0x1f", 0}, {" 1f", 0},
        {"1g", 0},  {"", 0}};
    for (const auto& [text, value] : texts)
        EXPECT_EQ(AscH2Integer(text), value) << text;
    EXPECT_EQ(Ipv4Text(0xC0A80102U), "192.168.1.2");
}

TEST(ModulePath, RelativeNamesLieBesideTheModule) {
    const std::string module = GetModuleFileName();
    EXPECT_TRUE(std::filesystem::exists(module)) << module;
    EXPECT_EQ(module.front(), '/');
    EXPECT_EQ(GetLibraryDirectory(), std::filesystem::path(module).parent_path().string() + "/");
    EXPECT_EQ(GetModuleFilePath("log/a.log"), GetLibraryDirectory() + "log/a.log");
    EXPECT_EQ(GetModuleFilePath("/tmp/a.log"), "/tmp/a.log");
}

TEST(Objects, IdsAreUniqueAcrossThreads) {
    constexpr int PerThread = 2000;
    std::vector<std::vector<std::uint64_t>> ids(4);
    OnThreads(4, [&](unsigned int thread) {
        for (int i = 0; i < PerThread; ++i)
            ids[thread].push_back(ObjectAbs(TypeIds::Image, nullptr).ObjID());
    });
    std::set<std::uint64_t> all;
    for (const auto& mine : ids) {
        EXPECT_TRUE(std::is_sorted(mine.begin(), mine.end()));
        all.insert(mine.begin(), mine.end());
    }
    EXPECT_EQ(all.size(), ids.size() * PerThread);
    EXPECT_EQ(*all.rbegin() - *all.begin() + 1, all.size());
}

TEST(Objects, CategoryIsTheHighByte) {
    const ObjectAbs manager(TypeIds::Manager + 0xFFU, "all");
    EXPECT_EQ(manager.ObjType(), TypeIds::Manager);
    EXPECT_EQ(manager.TypeId(), 0x060000FFU);
    EXPECT_EQ(manager.Name(), "all");
    EXPECT_EQ(ObjectAbs(TypeIds::SubDevice + 2U, nullptr).ObjType(), 0U);
}

TEST(StatusWords, EveryCodeHasItsOwn) {
    EXPECT_EQ(StatusText(Status::Ok), "success");
    EXPECT_EQ(StatusText(Status::TimeOut), "time-out");
    std::uint16_t code = 0x8000; // what a device answers is told by its standard name and its number
    for (const std::string& name : SplitString(
             "NOT_IMPLEMENTED INVALID_PARAMETER INVALID_ADDRESS WRITE_PROTECT BAD_ALIGNMENT ACCESS_DENIED "
             "BUSY "
             "LOCAL_PROBLEM MSG_MISMATCH INVALID_PROTOCOL NO_MSG PACKET_UNAVAILABLE DATA_OVERRUN "
             "INVALID_HEADER "
             "WRONG_CONFIG PACKET_NOT_YET_AVAILABLE PACKET_AND_PREV_REMOVED_FROM_MEMORY "
             "PACKET_REMOVED_FROM_MEMORY "
             "NO_REF_TIME PACKET_TEMPORARILY_UNAVAILABLE OVERFLOW ACTION_LATE LEADER_TRAILER_OVERFLOW",
             ' ')) {
        const std::string text = StatusText(Status::FromGvcp(++code));
        EXPECT_NE(text.find("GEV_STATUS_" + name + ":"), std::string::npos) << text;
        EXPECT_NE(text.find(StringFormat("0x%x", code)), std::string::npos) << text;
    }
    EXPECT_NE(StatusText(Status::FromGvcp(0x8ABC)).find("0x8abc"), std::string::npos);
    EXPECT_EQ(StatusText(static_cast<StatusCode>(0x800000EEU)), "error 0x800000ee");
}

TEST(LastFailures, AreTheThreadsOwnAndBounded) {
    ClearLastFailure();
    const std::uint64_t before = FailureCount();
    EXPECT_EQ(SetLastFailure(Status::TimeOut, "mine"), Status::TimeOut);
    std::thread([] {
        EXPECT_EQ(LastFailure().text, "");
        SetLastFailure(Status::NotFound, std::string(510, 'a') + "\xC3\xA4"); // a character across the end
        EXPECT_EQ(LastFailure().text, std::string(510, 'a'));
    }).join();
    EXPECT_EQ(std::pair(LastFailure().code, LastFailure().text),
              std::pair(Status::TimeOut, std::string("mine")));
    EXPECT_EQ(FailureCount(), before + 1);
    ClearLastFailure();
    EXPECT_EQ(std::pair(LastFailure().code, LastFailure().text), std::pair(Status::Ok, std::string()));
}

TEST(NumberTexts, AreWholeAndExact) {
    const std::pair<const char*, std::optional<std::int64_t>> integers[] = {
        {"640", 640}, {"-5", -5},  {"+5", 5},  {"0xFF", 255}, {"0xFFFFFFFFFFFFFFFF", -1},  {"", {}},
        {"+-5", {}},  {"1.0", {}}, {" 1", {}}, {"0x", {}},    {"9223372036854775808", {}}, {"12 ", {}},
        {"0x-1", {}}};
    for (const auto& [text, expected] : integers) {
        std::int64_t value = 0;
        EXPECT_EQ(ParseInteger(text, value), expected.has_value()) << text;
        EXPECT_EQ(value, expected.value_or(0)) << text;
    }
    double real = 0;
    EXPECT_TRUE(ParseReal("2.5e3", real) && real == 2500);
    for (const char* text : {"", "2,5", "2.5x", "1e999", "2.5 "})
        EXPECT_FALSE(ParseReal(text, real)) << text;
    for (const double value : {0.1, 1.0 / 3, 2500.0, -1e300})
        EXPECT_TRUE(ParseReal(ShortestText(value), real) && real == value) << ShortestText(value);
    EXPECT_EQ(ShortestText(0.1) + " " + FixedText(2.5), "0.1 2.500000");
}

TEST(UniqueFdTest, ClosesExactlyOnce) {
    const auto isOpen = [](int fd) { return ::fcntl(fd, F_GETFD) != -1; };
    const int fd = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    {
        UniqueFd first(fd);
        UniqueFd second(std::move(first));
        EXPECT_FALSE(first);
        second.Reset(fd); // its own: stays open
        EXPECT_TRUE(isOpen(fd));
    }
    EXPECT_FALSE(isOpen(fd));
}

} // namespace
} // namespace VX3::Test
