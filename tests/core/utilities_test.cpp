#include "core/ObjectAbs.h"
#include "core/UniqueFd.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/Status.h"
#include "vx3/core/Utilities.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <thread>

namespace VX3 {
namespace {

using Pieces = std::vector<std::string>;

TEST(Miscs, BitFunctionsAtTheirEdges) {
    EXPECT_EQ(Miscs::CeilingPower2(0), 0U);
    EXPECT_EQ(Miscs::CeilingPower2(1), 1U);
    EXPECT_EQ(Miscs::CeilingPower2(1000), 1024U);
    EXPECT_EQ(Miscs::CeilingPower2(0x80000000U), 0x80000000U);
    EXPECT_EQ(Miscs::CeilingPower2(0x80000001U), 0U);
    EXPECT_EQ(Miscs::LeadingZeros(0), 32U);
    EXPECT_EQ(Miscs::LeadingZeros(1), 31U);
    EXPECT_EQ(Miscs::FirstNotZero(0), 32U);
    EXPECT_EQ(Miscs::FirstNotZero(1024), 10U);
    EXPECT_EQ(Miscs::FirstNotZero(0xFFFFFFFFU), 31U);
    EXPECT_EQ(Miscs::LastNotZero(0), 32U);
    EXPECT_EQ(Miscs::LastNotZero(1), 1U);
    EXPECT_EQ(Miscs::LastNotZero(0x80000000U), 32U);
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
    EXPECT_EQ(AscH2Integer("1f"), 31U);
    EXPECT_EQ(AscH2Integer("FFFFFFFFFFFFFFFF"), UINT64_MAX);
    EXPECT_EQ(AscH2Integer("0x1f"), 0U);
    EXPECT_EQ(AscH2Integer(" 1f"), 0U);
    EXPECT_EQ(AscH2Integer(""), 0U);
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
    std::vector<std::thread> threads;
    for (auto& mine : ids)
        threads.emplace_back([&mine] {
            for (int i = 0; i < PerThread; ++i)
                mine.push_back(ObjectAbs(TypeIds::Image, nullptr).ObjID());
        });
    for (std::thread& thread : threads)
        thread.join();
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
    const std::string denied = StatusText(Status::FromGvcp(0x8006));
    EXPECT_NE(denied.find("ACCESS_DENIED"), std::string::npos) << denied;
    EXPECT_NE(denied.find("0x8006"), std::string::npos) << denied;
    EXPECT_NE(StatusText(Status::FromGvcp(0x8007)).find("BUSY"), std::string::npos);
    EXPECT_NE(StatusText(Status::FromGvcp(0x800C)).find("PACKET_UNAVAILABLE"), std::string::npos);
    EXPECT_NE(StatusText(Status::FromGvcp(0x8ABC)).find("0x8abc"), std::string::npos);
    EXPECT_EQ(StatusText(static_cast<StatusCode>(0x800000EEU)), "error 0x800000ee");
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
} // namespace VX3
