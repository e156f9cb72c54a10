// Node maps and their typed wrappers, ports and callbacks.
#include "GenApi/GenApi.h"
#include "support/MemoryOwner.h"
#include "support/TempDir.h"
#include "support/Threads.h"
#include "vx3/genicam/DescriptionCheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <zip.h>

namespace VX3::Test {
namespace {

using namespace GenICam;

std::string Zipped(const std::string& text) {
    const TempDir directory;
    const std::string path = directory / "description.zip";
    zip_t* archive = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, nullptr);
    zip_file_add(archive, "a.xml", zip_source_buffer(archive, text.data(), text.size(), 0), 0);
    zip_close(archive);
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(NodeMap, WrapsEveryTypeAndKeepsPlacesOfPorts) {
    const Camera camera;
    const std::pair<const char*, EInterfaceType> expected[] = {
        {"Stepped", EInterfaceType::Integer}, {"SteppedReg", EInterfaceType::Integer},
        {"Rate", EInterfaceType::Float},      {"Flag", EInterfaceType::Boolean},
        {"Fire", EInterfaceType::Command},    {"Mode", EInterfaceType::Enumeration},
        {"Label", EInterfaceType::String},    {"Four", EInterfaceType::Register},
        {"Root", EInterfaceType::Category},   {"EnumEntry_Mode_Fast", EInterfaceType::EnumEntry}};
    for (const auto& [name, type] : expected) {
        INode* node = camera.nodes->GetNode(name); // the first one also builds the wrappers
        ASSERT_NE(node, nullptr) << name;
        EXPECT_EQ(node->GetPrincipalInterfaceType(), type) << name;
        EXPECT_EQ(node->GetName(), name);
    }
    EXPECT_EQ(camera.nodes->GetNode("Device"), nullptr) << "ports have no wrapper";
    EXPECT_EQ(camera.nodes->GetNode("stepped"), nullptr) << "names are case-sensitive";
    const std::vector<INode*>& all = camera.nodes->GetNodes();
    EXPECT_EQ(all.size(), camera.nodes->GetNumNodes());
    EXPECT_EQ(std::count(all.begin(), all.end(), nullptr), 1);
}

TEST(NodeMap, AnswersForItsNodes) {
    const Camera camera;
    INode& node = *camera.nodes->GetNode("Stepped");
    EXPECT_EQ(node.GetVisibility(), EVisibility::Expert);
    EXPECT_TRUE(node.IsStreamable());
    EXPECT_TRUE(node.IsFeature());
    EXPECT_EQ(node.GetAccessMode(), EAccessMode::ReadWrite);
    EXPECT_EQ(node.GetRepresentation(""), "Linear");
    std::string value;
    std::string attribute;
    EXPECT_TRUE(node.GetProperty("Unit", value, attribute));
    EXPECT_EQ(value, "px");
    EXPECT_FALSE(node.GetProperty("NoSuchProperty", value, attribute));
    const std::vector<std::string> names = node.GetPropertyNames();
    EXPECT_NE(std::find(names.begin(), names.end(), "Unit"), names.end());
    const std::vector<INode*> children = node.GetChildren(ELinkType::ReadingChildren);
    EXPECT_NE(std::find(children.begin(), children.end(), camera.nodes->GetNode("SteppedReg")),
              children.end());
    const auto features = camera.Get<ICategory>("Root").GetFeatures();
    ASSERT_EQ(features.size(), 3U);
    EXPECT_EQ(features[2]->GetNode(), camera.nodes->GetNode("Mode"));
}

TEST(NodeMap, CallsTheLastRegisteredCallback) {
    const Camera camera;
    INode& node = *camera.nodes->GetNode("Stepped");
    auto& value = camera.Get<IInteger>("Stepped");
    int first = 0;
    int second = 0;
    node.RegisterCallback([&](INode*) { ++first; });
    long handle = node.RegisterCallback([&](INode* changed) {
        EXPECT_EQ(changed, &node);
        ++second;
    });
    value.SetValue(8, true);
    EXPECT_EQ(first, 0);
    EXPECT_GE(second, 1);
    const int calls = second;
    EXPECT_TRUE(node.DeregisterCallback(handle));
    value.SetValue(12, true);
    EXPECT_EQ(second, calls);
    // A callback may remove itself while it runs.
    node.RegisterCallback([&](INode* changed) {
        ++first;
        long own = 0;
        changed->DeregisterCallback(own);
    });
    value.SetValue(16, true);
    value.SetValue(20, true);
    EXPECT_EQ(first, 1);
}

TEST(NodeMap, IsBuiltOnceByWhoeverComesFirst) {
    const Camera camera;
    INode* seen[4] = {};
    OnThreads(4, [&](unsigned int thread) { seen[thread] = camera.nodes->GetNode("Mode"); });
    for (INode* node : seen)
        EXPECT_EQ(node, camera.nodes->GetNode("Mode"));
}

TEST(Port, ReportsEveryRefusalAndGoesOnAfterIt) {
    const Camera camera;
    auto& value = camera.Get<IInteger>("Wide");
    value.SetValue(1, true);
    camera.owner->result = Status::NodeFailed;
    EXPECT_THROW(value.SetValue(2, false), GenICam_3_2::AccessException);
    EXPECT_THROW(value.GetValue(false, false), GenICam_3_2::AccessException) << "the refused value was kept";
    camera.owner->result = Status::TimeOut;
    EXPECT_THROW(value.SetValue(2, false), GenICam_3_2::TimeoutException);
    camera.owner->result = Status::Ok;
    EXPECT_EQ(value.GetValue(false, false), 1);
    value.SetValue(3, false);
    EXPECT_EQ(value.GetValue(false, true), 3);
}

TEST(Port, OfAnOwnerToBeReadOnlyMakesFeaturesReadOnly) {
    const Camera camera;
    camera.owner->writable = false;
    auto& value = camera.Get<IInteger>("Wide");
    EXPECT_EQ(value.GetAccessMode(), EAccessMode::ReadOnly);
    EXPECT_THROW(value.SetValue(2, true), GenICam_3_2::AccessException);
    EXPECT_EQ(camera.owner->writes, 0);
    EXPECT_EQ(value.GetValue(false, false), 0);
}

TEST(Port, IsReplacedByALaterConnectAndOutlivesItsOwner) {
    Camera camera;
    const auto other = std::make_shared<MemoryOwner>();
    EXPECT_FALSE(camera.nodes->Connect(other, "NoSuchPort"));
    camera.Get<IInteger>("Wide").SetValue(5, false);
    EXPECT_EQ(camera.owner->writes, 1) << "a refused connect keeps the old port";
    EXPECT_TRUE(camera.nodes->Connect(other, "Device"));
    camera.Get<IInteger>("Wide").SetValue(6, false);
    EXPECT_EQ(camera.owner->writes, 1);
    EXPECT_EQ(other->writes, 1);
    Camera orphan;
    auto& value = orphan.Get<IInteger>("Wide");
    orphan.owner.reset();
    EXPECT_THROW(value.SetValue(1, true), GenICam_3_2::AccessException);
    EXPECT_THROW(value.GetValue(false, true), GenICam_3_2::AccessException);
}

TEST(GenApiRI, GoesByTheNamesExtensionAndThrowsForNoDamage) {
    const auto owner = std::make_shared<MemoryOwner>();
    const std::string whole = EveryType;
    const std::string zipped = Zipped(whole);
    const std::tuple<const char*, std::string, bool> descriptions[] = {
        {"dir.v1/Camera.xml", whole, true}, {"Camera.ZIP", zipped, true},
        {"Camera.txt", whole, false},       {"xml", whole, false},
        {"Camera.xml", "", false},          {"Camera.xml", whole.substr(0, whole.size() / 2), false},
        {"Camera.xml", "<a/>", false},      {"Camera.zip", zipped.substr(0, zipped.size() / 2), false}};
    for (const auto& [name, text, usable] : descriptions) {
        GenApiRI genApi(Xml(name, text), owner, "Device");
        EXPECT_EQ(genApi.GetNodeMap() != nullptr, usable) << name;
        NodeValue value(1L);
        EXPECT_EQ(genApi.SetNodeValue("Stepped", value), usable ? Status::Ok : Status::Generic) << name;
        EXPECT_EQ(genApi.GetNodeValue("Stepped").IsEmpty(), !usable) << name;
    }
    EXPECT_EQ(GenApiRI(nullptr, owner, nullptr).GetNodeMap(), nullptr);
}

TEST(GenApiRI, MapOutlivesItsMaker) {
    const auto owner = std::make_shared<MemoryOwner>();
    std::shared_ptr<INodeMap> nodes = GenApiRI(Xml("Camera.xml", EveryType), owner, nullptr).GetNodeMap();
    auto& value = dynamic_cast<IInteger&>(*nodes->GetNode("Stepped"));
    value.SetValue(12, true);
    EXPECT_EQ(owner->memory[0x10], 12);
}

TEST(DescriptionCheck, TellsProblemsWithTheirLines) {
    const TempDir directory;
    const std::string path = directory / "check.xml";
    std::string text = EveryType;
    const std::string good = "<pValue>RateReg</pValue>";
    text.replace(text.find(good), good.size(), "<pValue>Missing</pValue>");
    const auto line = 1 + static_cast<unsigned int>(std::count(
                              text.begin(), text.begin() + static_cast<long>(text.find("Missing")), '\n'));
    std::ofstream(path) << text;
    const DescriptionCheck check(path);
    ASSERT_NE(check.GetNodeMap(), nullptr) << check.Error();
    ASSERT_FALSE(check.Problems().empty());
    const DescriptionProblem& problem = check.Problems().front();
    EXPECT_EQ(problem.line, line) << problem.text;
    EXPECT_NE((problem.node + problem.text).find("Missing"), std::string::npos) << problem.text;
    EXPECT_FALSE(IsAvailable(check.GetNodeMap()->GetNode("Rate")->GetAccessMode()));
    auto& good1 = dynamic_cast<IInteger&>(*check.GetNodeMap()->GetNode("Stepped"));
    EXPECT_EQ(good1.GetValue(true, true), 0) << "registers read as zeros";

    EXPECT_EQ(DescriptionText(*Xml("a.xml", EveryType)), EveryType);
    EXPECT_EQ(DescriptionText(*Xml("a.zip", Zipped(EveryType))), EveryType);
    EXPECT_EQ(DescriptionText(*Xml("a.zip", "PK\3\4 no archive")), "");
    const DescriptionCheck missing(directory / "nothing.xml");
    EXPECT_EQ(missing.GetNodeMap(), nullptr);
    EXPECT_NE(missing.Error().find("nothing.xml"), std::string::npos) << missing.Error();
}

TEST(IntegerA, ClampsAndSnapsOntoTheGridThatStartsAtTheMinimum) {
    const Camera camera;
    auto& stepped = camera.Get<IInteger>("Stepped");   // 0 .. 100 by 4
    auto& odd = camera.Get<IInteger>("Odd");           // -10 .. 10 by 7: the maximum is not on the grid
    auto& wide = camera.Get<IInteger>("Wide");         // the whole 64-bit range, where max - min overflows
    using Values = std::vector<std::pair<long, long>>; // asked for, held
    const std::pair<IInteger*, Values> cases[] = {
        {&stepped, {{10, 8}, {101, 100}, {-5, 0}, {100, 100}, {0, 0}, {3, 0}, {99, 96}}},
        {&odd, {{3, -3}, {10, 4}}},
        {&wide, {{INT64_MIN, INT64_MIN}, {INT64_MAX, INT64_MAX}, {-1, -1}, {5000000000, 5000000000}}}};
    for (const auto& [node, values] : cases)
        for (const auto& [asked, held] : values) {
            node->SetValue(asked, true);
            EXPECT_EQ(node->GetValue(true, true), held) << asked;
            EXPECT_EQ(**node, held) << asked;
        }
    EXPECT_EQ(std::tuple(stepped.GetUnit(), stepped.GetInc(), stepped.GetIncMode()),
              std::tuple("px", 4, EIncMode::FixedIncrement));
    stepped.ImposeMax(48);
    stepped.SetValue(90, true);
    EXPECT_EQ(std::pair(stepped.GetValue(true, true), stepped.GetMax()), std::pair(48L, 48L))
        << "imposed bounds too";
}

TEST(FloatA, Clamps) {
    const Camera camera;
    auto& rate = camera.Get<IFloat>("Rate");
    const std::pair<double, double> cases[] = {{3.0, 2.5}, {1.0, 1.5}, {2.25, 2.25}};
    for (const auto& [asked, held] : cases) {
        rate.SetValue(asked, true);
        EXPECT_DOUBLE_EQ(rate.GetValue(true, true), held);
    }
    rate.ImposeMin(1.75);
    rate.ImposeMax(2.25);
    rate.SetValue(1.5, true);
    EXPECT_EQ(std::tuple(rate.GetMin(), *rate, rate.GetMax(), rate.GetUnit()),
              std::tuple(1.75, 1.75, 2.25, "Hz"));
}

TEST(TypedNodes, AssignmentAndExecutionWrite) {
    const Camera camera;
    camera.Get<IInteger>("Stepped") = 24L;
    camera.Get<IFloat>("Rate") = 2.0;
    camera.Get<IBoolean>("Flag") = true;
    camera.Get<IString>("Label") = std::string("left");
    camera.Get<IEnumeration>("Mode") = std::string("Fast");
    const std::vector<unsigned char>& memory = camera.owner->memory;
    EXPECT_EQ(memory[0x10], 24);
    double rate = 0.0;
    std::memcpy(&rate, &memory[0x28], sizeof(rate));
    EXPECT_DOUBLE_EQ(rate, 2.0);
    EXPECT_EQ(memory[0x30], 1);
    EXPECT_STREQ(reinterpret_cast<const char*>(&memory[0x40]), "left");
    EXPECT_EQ(memory[0x38], 9);
    camera.Get<ICommand>("Fire").Execute(true);
    EXPECT_EQ(memory[0x34], 7);
    EXPECT_TRUE(camera.Get<ICommand>("Fire").IsDone(true)) << "write-only commands are done at once";
    EXPECT_TRUE(camera.Get<IBoolean>("Flag")());
    EXPECT_EQ(*camera.Get<IString>("Label"), "left");
    EXPECT_EQ(*camera.Get<IEnumeration>("Mode"), "Fast");
    EXPECT_ANY_THROW(camera.Get<IEnumeration>("Mode") = std::string("Sideways"));
}

TEST(EnumerationA, FindsEntriesThroughTheMap) {
    const Camera camera;
    auto& mode = camera.Get<IEnumeration>("Mode");
    EXPECT_EQ(mode.GetSymbolics(), (std::vector<std::string>{"Slow", "Fast"}));
    IEnumEntry* fast = mode.GetEntry(9);
    ASSERT_NE(fast, nullptr);
    EXPECT_EQ(fast, mode.GetEntries().at(1));
    EXPECT_EQ(fast, mode.GetEntryByName("EnumEntry_Mode_Fast")) << "by node name";
    EXPECT_EQ(mode.GetEntryByName("Fast"), nullptr) << "not by symbolic name";
    EXPECT_EQ(mode.GetEntryByName("Stepped"), nullptr) << "not another kind of node";
    EXPECT_EQ(mode.GetEntry(4), nullptr);
    mode.SetIntValue(3, true);
    EXPECT_EQ(mode.GetCurrentEntry(true, true)->GetSymbolic(), "Slow");
    EXPECT_ANY_THROW(mode.SetIntValue(4, true));
}

TEST(TypedNodes, GiveVariantsOfTheirOwnType) {
    const Camera camera;
    camera.owner->memory[0x60] = 0x12;
    camera.owner->memory[0x63] = 0x34;
    unsigned int four = 0;
    std::memcpy(&four, &camera.owner->memory[0x60], 4);
    const auto variant = [&](const char* name) { return camera.Get<IValue>(name).GetVariant(); };
    EXPECT_TRUE(*variant("Stepped") == Variant<long>(0));
    EXPECT_FALSE(*variant("Stepped") == Variant<unsigned int>(0)) << "another type is another value";
    EXPECT_TRUE(*variant("Flag") == Variant<bool>(false));
    EXPECT_TRUE(*variant("Label") == Variant<std::string>(""));
    EXPECT_TRUE(*variant("Four") == Variant<unsigned int>(four)) << "register bytes in host order";
    EXPECT_NE(dynamic_cast<Variant<std::string>*>(variant("Three").get()), nullptr);
    EXPECT_TRUE(*variant("Fire") == Variant<bool>(true));
    EXPECT_TRUE(*variant("EnumEntry_Mode_Fast") == Variant<unsigned int>(0));
    EXPECT_TRUE(*variant("Root") == Variant<long>(0));
}

} // namespace
} // namespace VX3::Test
