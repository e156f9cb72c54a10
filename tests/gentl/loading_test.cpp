// Producers are found, loaded, asked and let go, and one that is bad harms no other.
#include "gentl/DescriptionUrl.h"
#include "gentl/ProducerFile.h"
#include "support/LogCapture.h"
#include "support/ProducerLab.h"
#include "support/Threads.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>

namespace VX3::Test {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

std::string WhyRefused(const std::string& path) {
    for (const GenTLProducer& producer : GenTLProducers())
        if (producer.path == path)
            return producer.failure;
    return "unknown";
}

TEST(Producers, OnlyFilesNamedCtiOfOneFolder) {
    ProducerLab lab;
    for (const char* name : {"a.cti", "b.CTI", "c.cti.bak", "cti"})
        lab.Write(name, "");
    std::filesystem::create_directory(lab.Folder() / "deeper");
    lab.Write("deeper/d.cti", "");
    const std::string folder = lab.Folder().Path();
    EXPECT_EQ(MiscDeviceManager::GetAllEsoFiles(folder.c_str()), std::vector<std::string>{folder + "/a.cti"});
    EXPECT_EQ(MiscDeviceManager::GetAllEsoFiles((folder + "/a.cti").c_str()), std::vector<std::string>());
    EXPECT_EQ(MiscDeviceManager::GetAllEsoFiles("/no/such/folder"), std::vector<std::string>());
    EXPECT_EQ(ProducerFilesOfPath("relative::/no/such:" + folder + ":" + folder + "/deeper/d.cti"),
              (std::vector<std::string>{folder + "/a.cti", folder + "/deeper/d.cti"}));
    ::setenv("GENICAM_GENTL64_PATH", folder.c_str(), 1);
    EXPECT_EQ(ProducerFilesOfEnvironment(), std::vector<std::string>{folder + "/a.cti"});
    ::unsetenv("GENICAM_GENTL64_PATH");
    EXPECT_EQ(ProducerFilesOfEnvironment(), std::vector<std::string>());
}

TEST(Producers, BadOnesAreRefusedWithTheReasonAndOthersLoad) {
    LogCapture log;
    ProducerLab lab;
    const std::string text = lab.Write("text.cti", "I am a text that somebody called a producer\n");
    const std::string empty = lab.Write("empty.cti", "");
    std::string foreign(64, '\0');
    foreign.replace(0, 7,
                    "\x7F"
                    "ELF\x02\x01\x01");
    foreign[16] = 3;
    foreign[18] = '\x08'; // MIPS
    const std::string wrong = lab.Write("wrong.cti", foreign);
    std::filesystem::create_directory(lab.Folder() / "folder.cti");
    const std::string lacking = lab.Add("lacking.cti", {}, VX3_LACKING_PRODUCER);
    const std::string noInit = lab.Add("noinit.cti", {{"fail.GCInitLib", "-1010"}});
    const std::string noOpen = lab.Add("noopen.cti", {{"fail.TLOpen", "-10077"}});
    const std::string escapes =
        lab.Add("escapes.cti", {{"producer.version", "1\x1B[31mred\a"}, {"cameras", "1"}});
    const std::string good = lab.Add("good.cti");
    const auto manager = lab.Manager();
    EXPECT_EQ(manager->EnumDevices(), 2);
    EXPECT_EQ(manager->GetDevices(IntfDevType::Misc), 2);
    EXPECT_EQ(WhyRefused(text), "it is no shared library");
    EXPECT_EQ(WhyRefused(empty), "it is no shared library");
    EXPECT_NE(WhyRefused(wrong).find("it is made for another processor (8)"), std::string::npos);
    EXPECT_EQ(WhyRefused(lab.Folder() / "folder.cti"), "it is no file");
    EXPECT_EQ(WhyRefused(lacking), "it lacks the function GCGetInfo");
    EXPECT_NE(WhyRefused(noInit).find("GCInitLib failed: GC_ERR_IO"), std::string::npos);
    EXPECT_NE(WhyRefused(noOpen).find("TLOpen failed: an error of the producer's own (GenTL -10077)"),
              std::string::npos);
    EXPECT_EQ(WhyRefused(good), "");
    for (const GenTLProducer& producer : GenTLProducers())
        if (producer.path == escapes)
            EXPECT_EQ(producer.version, "1?[31mred?");
    EXPECT_TRUE(Eventually([&] { return log.Has("Ready to load library:" + good + "..."); }));
    EXPECT_TRUE(log.Has("load library with result 0x"));
    EXPECT_TRUE(log.Has(text + " is not used: it is no shared library"));
}

TEST(Producers, OneThatHangsCostsTheOthersNothing) {
    ProducerLab lab;
    const std::string hung = lab.Add("hung.cti", {{"hang.GCInitLib", "60000"}});
    const std::string slow = lab.Add("slow.cti", {{"hang.TLUpdateInterfaceList", "60000"}});
    const std::string good = lab.Add("good.cti");
    LogCapture log;
    const auto start = steady_clock::now();
    auto manager = lab.Manager();
    EXPECT_EQ(manager->EnumDevices(), 1);
    EXPECT_LT(steady_clock::now() - start, 5500ms);
    EXPECT_EQ(WhyRefused(hung), "it does not return from being loaded");
    EXPECT_TRUE(Eventually([&] { return log.Has("hung.cti: GCInitLib has not returned for"); }));
    EXPECT_TRUE(Eventually([&] { return log.Has("slow.cti: TLUpdateInterfaceList has not returned for"); }));

    const auto later = steady_clock::now();
    EXPECT_EQ(manager->EnumDevices(), 1);
    EXPECT_LT(steady_clock::now() - later, 2500ms);
    {
        LoadedProducer(hung).Set("release", "1");
        LoadedProducer(slow).Set("release", "1");
    }
    EXPECT_TRUE(Eventually([&] { return manager->EnumDevices() == 3; })) << "both came back after all";
    EXPECT_EQ(WhyRefused(hung), "");
    manager.reset();
}

TEST(Producers, AreLoadedOnceAProcessAndClosedWithTheLast) {
    ProducerLab lab;
    const std::string path = lab.Add("test.cti");
    std::filesystem::create_symlink(path, lab.Folder() / "again.cti");
    auto first = lab.Manager();
    EXPECT_EQ(first->EnumDevices(), 1) << "the link is the same producer";
    LoadedProducer producer(path);
    EXPECT_EQ(producer.Calls("GCInitLib"), 1);
    auto second = lab.Manager();
    EXPECT_EQ(second->EnumDevices(), 1);
    EXPECT_EQ(producer.Calls("TLOpenInterface"), 1) << "which would refuse a second";
    const auto kept = first->GetDevice(0, IntfDevType::Misc);
    EXPECT_EQ(first->EnumDevices(), 1);
    EXPECT_EQ(first->GetDevice(0, IntfDevType::Misc), kept) << "a known interface stays the same object";

    auto interface = std::dynamic_pointer_cast<GenTLInterfaceDev>(kept);
    EXPECT_EQ(interface->EnumSubDevices(0).size(), 2U);
    first.reset();
    second.reset();
    EXPECT_EQ(interface->EnumSubDevices(0).size(), 2U) << "loaded while anything of it lives";
    EXPECT_EQ(producer.Calls("TLClose"), 0);
    interface.reset();
    std::weak_ptr<IDevice> gone = kept;
    const_cast<std::shared_ptr<IDevice>&>(kept).reset();
    EXPECT_TRUE(gone.expired());
    EXPECT_EQ(producer.Calls("IFClose"), 1);
    EXPECT_EQ(producer.Calls("TLClose"), 1);
    EXPECT_EQ(producer.Calls("GCCloseLib"), 1);
    const auto third = lab.Manager();
    EXPECT_EQ(third->EnumDevices(), 1) << "and again";
}

TEST(Producers, ReportNoInterfacesOrFewerOrMore) {
    GenTLLab lab;
    EXPECT_EQ(lab.Manager().EnumDevices(), 1);
    const auto device = lab.Manager().GetDevice(0, IntfDevType::All);
    EXPECT_EQ(std::tuple(device->DeviceType(), device->Name(), device->UniqueName(), device->IsInterface()),
              std::tuple(0x10040U, std::string("Test interface-0"), std::string("interface-0"), true));
    EXPECT_EQ(device->GetInfo(),
              (std::list<std::pair<std::string, std::string>>{{"Name", "Test interface-0"},
                                                              {"VendorName", "Vendor of tests"},
                                                              {"ModelName", "Test producer"},
                                                              {"Version", "3.1"},
                                                              {"TLVersion", "1.5"}}));
    lab.Producer().Set("interfaces", "2");
    EXPECT_EQ(lab.Manager().EnumDevices(), 2);
    EXPECT_EQ(lab.Manager().GetDevice(0, IntfDevType::All), device);
    lab.Producer().Set("interfaces", "4000000000");
    EXPECT_EQ(lab.Manager().EnumDevices(), 2) << "the rest of what it claims is not there";
    lab.Producer().Set("interfaces", "0");
    EXPECT_EQ(lab.Manager().EnumDevices(), 0);
    EXPECT_EQ(lab.Manager().GetDevices(IntfDevType::All), 2) << "nothing reported changes nothing";
    lab.Producer().Set("interfaces", "2");
    EXPECT_EQ(lab.Manager().EnumDevices(), 2);
    EXPECT_EQ(lab.Manager().GetDevice(0, IntfDevType::All), device);
    lab.Producer().Set("fail.TLGetNumInterfaces", "-1010");
    EXPECT_EQ(lab.Manager().EnumDevices(), 2) << "who was not heard may be there all the same";
    lab.Producer().Set("fail.TLGetNumInterfaces", "0");
    lab.Producer().Set("interfaces", "1");
    EXPECT_EQ(lab.Manager().EnumDevices(), 1);
}

// ---- pure parts ----

TEST(DescriptionUrl, ReadsEveryFormThatIsSeen) {
    using Kind = DescriptionUrl::Kind;
    for (const char* url : {"local:cam.zip;10000;2F00?SchemaVersion=1.0.0", "LOCAL:///cam.zip;10000;2f00",
                            "Local:cam.zip;10000;2F00"}) {
        const DescriptionUrl parsed = ParseDescriptionUrl(url, "/p/");
        EXPECT_EQ(std::tuple(parsed.kind, parsed.name, parsed.address, parsed.length),
                  std::tuple(Kind::Local, std::string("cam.zip"), 0x10000U, 0x2F00U))
            << url;
    }
    EXPECT_EQ(ParseDescriptionUrl("local:a|b;1;1", "/p/").name, "a:b");
    const auto paths = [](const char* url) { return ParseDescriptionUrl(url, "/p/").paths; };
    using Paths = std::vector<std::string>;
    EXPECT_EQ(paths("file:///x/y.xml?SchemaVersion=1.1.0"), (Paths{"/x/y.xml", "x/y.xml", "/p/x/y.xml"}));
    EXPECT_EQ(paths("FILE:x%20y.xml"), (Paths{"x y.xml", "/p/x y.xml"}));
    EXPECT_EQ(paths("file:/x/y.xml"), (Paths{"/x/y.xml"}));
    for (const char* url :
         {"", "local", "local:;1;1", "local:a.xml;0;1", "local:a.xml;1;0", "local:a.xml;1;6400001",
          "local:a.xml;1", "http://x/y.xml", "file:", "local:a;b;c;d"})
        EXPECT_EQ(ParseDescriptionUrl(url, "/p/").kind, Kind::Refused) << url;
}

} // namespace
} // namespace VX3::Test
