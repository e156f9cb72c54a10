// Node maps over hostile registers. The first byte chooses a description, or says that the description itself
// comes from the input, up to a NUL; the rest is what the device answers: values that change between reads,
// answers that fail, are refused or throw what no port should. Every node is read and set through its typed
// interface and by text; all may be refused, nothing may crash, hang or leak.
#include "FuzzInput.h"

#include <GenApi/GenApi.h>

#include <memory>
#include <stdexcept>

using namespace GenApi_3_2;
using VX3::Fuzz::FuzzInput;

namespace {

// Each kind of node at least once; several feed each other.
const char* const Nodes[] = {
    R"(<IntReg Name="R"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>
<IntReg Name="Long"><pAddress>R</pAddress><pIndex Offset="3">R</pIndex><pLength>R</pLength><AccessMode>RW</AccessMode><pPort>Device</pPort><Sign>Signed</Sign><Endianess>BigEndian</Endianess></IntReg>
<MaskedIntReg Name="Bits"><Address>4</Address><Length>8</Length><LSB>3</LSB><MSB>60</MSB><AccessMode>RW</AccessMode><pPort>Device</pPort><Sign>Signed</Sign></MaskedIntReg>
<StructReg Comment="s"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><StructEntry Name="Low"><LSB>0</LSB><MSB>7</MSB></StructEntry><StructEntry Name="High"><Bit>31</Bit><pIsLocked>Low</pIsLocked></StructEntry></StructReg>
<FloatReg Name="F4"><Address>12</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></FloatReg>
<FloatReg Name="F8"><Address>16</Address><pLength>R</pLength><AccessMode>RW</AccessMode><pPort>Device</pPort><Cachable>NoCache</Cachable></FloatReg>
<StringReg Name="Text"><Address>24</Address><pLength>Low</pLength><AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>
<Register Name="Raw"><pAddress>Bits</pAddress><pLength>Low</pLength><AccessMode>RW</AccessMode><pPort>Device</pPort></Register>
<String Name="S"><pValue>Text</pValue></String><Port Name="Device"><SwapEndianess>Yes</SwapEndianess></Port>)",
    R"(<IntReg Name="R"><Address>0</Address><Length>8</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><PollingTime>10</PollingTime><pInvalidator>Run</pInvalidator></IntReg>
<FloatReg Name="F"><Address>8</Address><Length>8</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Cachable>NoCache</Cachable></FloatReg>
<Integer Name="I"><pValue>R</pValue><pMin>K</pMin><pMax>C</pMax><pInc>R</pInc></Integer>
<Float Name="D"><pValue>V</pValue><pMin>F</pMin><pMax>F</pMax><pInc>F</pInc><pValueCopy>R</pValueCopy></Float>
<IntSwissKnife Name="K"><pVariable Name="A">R</pVariable><pVariable Name="I">List</pVariable><Formula>A * A - (A &lt;&lt; 1) + I.Max / I.Inc ** 3 % (A | 1)</Formula></IntSwissKnife>
<SwissKnife Name="KF"><pVariable Name="A">F</pVariable><Expression Name="X">LN(A) + SQRT(A)</Expression><Formula>A &gt; 0 ? X : ROUND(A, 2) &amp; 7</Formula></SwissKnife>
<IntConverter Name="C"><FormulaTo>FROM / 3</FormulaTo><FormulaFrom>TO * 3</FormulaFrom><pValue>R</pValue><IsLinear>Yes</IsLinear></IntConverter>
<Converter Name="V"><FormulaTo>1 / FROM</FormulaTo><FormulaFrom>1 / TO</FormulaFrom><pValue>F</pValue><Slope>Decreasing</Slope><IsLinear>Yes</IsLinear></Converter>
<Converter Name="W"><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>D</pValue><IsLinear>Yes</IsLinear></Converter>
<Integer Name="List"><pIndex>R</pIndex><ValueIndexed Index="0">5</ValueIndexed><pValueIndexed Index="1">R</pValueIndexed><pValueDefault>C</pValueDefault><ValidValueSet>1;2;5</ValidValueSet></Integer>
<Integer Name="Mac"><pValue>R</pValue><Representation>MACAddress</Representation><pIsAvailable>B</pIsAvailable></Integer>
<Boolean Name="B"><pValue>R</pValue><OnValue>5</OnValue></Boolean>
<Command Name="Run"><pValue>R</pValue><pCommandValue>R</pCommandValue></Command><Port Name="Device"/>)",
    R"(<IntReg Name="R"><Address>0</Address><Length>1</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Sign>Signed</Sign></IntReg>
<Enumeration Name="E"><EnumEntry Name="A"><Value>0</Value><NumericValue>1.5</NumericValue></EnumEntry><EnumEntry Name="B"><Value>1</Value><pIsAvailable>R</pIsAvailable><IsSelfClearing>Yes</IsSelfClearing></EnumEntry><EnumEntry Name="C"><Value>-1</Value><pIsImplemented>R</pIsImplemented></EnumEntry><pValue>R</pValue><pSelected>Speed</pSelected><pError>Err</pError></Enumeration>
<Enumeration Name="Err"><EnumEntry Name="Fine"><Value>0</Value></EnumEntry><Value>0</Value></Enumeration>
<Float Name="Speed"><pValue>E</pValue><pIsLocked>R</pIsLocked></Float><Integer Name="N"><pValue>Speed</pValue></Integer>
<ConfRom Name="Rom"><Address>0x10</Address><Length>64</Length><pPort>Device</pPort></ConfRom>
<IntKey Name="Key"><p1212Parser>Rom</p1212Parser><Key>3</Key></IntKey><TextDesc Name="Desc"><p1212Parser>Rom</p1212Parser><Key>3</Key></TextDesc>
<Category Name="Root"><pFeature>E</pFeature><pFeature>Root</pFeature></Category><Port Name="Device"><pIsAvailable>R</pIsAvailable></Port>)",
};
constexpr std::size_t NodesCount = sizeof(Nodes) / sizeof(Nodes[0]);

class HostilePort final : public IPort {
public:
    explicit HostilePort(FuzzInput& input) : input_(input) {}
    EAccessMode GetAccessMode() const override { return mode_; }
    void Read(void* to, std::int64_t, std::int64_t length) override {
        MayFail();
        // A short answer leaves the rest of the room as the caller gave it.
        const auto count = static_cast<std::size_t>(length) / (isShort_ ? 2 : 1);
        const std::vector<std::uint8_t> answer = input_.Bytes(count);
        std::memset(to, 0, count);
        std::copy(answer.begin(), answer.end(), static_cast<std::uint8_t*>(to));
    }
    void Write(const void* from, std::int64_t, std::int64_t length) override {
        if (length > 0)
            VX3::Fuzz::Touch(static_cast<const std::uint8_t*>(from) + length - 1);
        MayFail();
    }

private:
    void MayFail() {
        const std::uint8_t how = input_.Empty() ? 0 : input_.Take();
        mode_ = static_cast<EAccessMode>(how >> 5 > 4 ? RW : how >> 5);
        isShort_ = (how & 31) == 8;
        switch (how & 31) {
        case 1:
            throw "no answer";
        case 2:
            throw std::runtime_error("odd");
        case 3:
            throw GenICam_3_2::TimeoutException("late", "", 0);
        case 4:
            throw static_cast<const char*>(nullptr);
        default:
            break;
        }
    }

    FuzzInput& input_;
    EAccessMode mode_ = RW;
    bool isShort_ = false;
};

struct Destroyer {
    void operator()(INodeMap* map) const { dynamic_cast<IDestroy*>(map)->Destroy(); }
};

template <class Function>
void Try(const Function& function) {
    try {
        function();
    } catch (const GenICam_3_2::GenericException&) {
    }
}

template <class Number, class T>
void UseNumber(Number& number, T value, bool verify) {
    Try([&] { number.GetValue(verify, !verify); });
    Try([&] { number.GetMin(); });
    Try([&] { number.GetMax(); });
    Try([&] { number.GetIncMode(); });
    Try([&] { number.GetInc(); });
    Try([&] { number.GetListOfValidValues(verify); });
    Try([&] { number.SetValue(value, verify); });
    Try([&] { number.SetValue(number.GetMax(), verify); });
}

void UseChoice(IEnumeration& choice, std::int64_t value, bool verify) {
    StringList_t names;
    NodeList_t entries;
    Try([&] { choice.GetSymbolics(names); });
    Try([&] { choice.GetEntries(entries); });
    Try([&] { choice.GetIntValue(verify); });
    Try([&] { choice.GetCurrentEntry(verify); });
    Try([&] { choice.SetIntValue(value % 3, verify); });
    for (const gcstring& name : names)
        Try([&] { choice.FromString(name, verify); });
}

void UseRegister(IRegister& reg, bool verify) {
    std::uint8_t bytes[300] = {};
    Try([&] { reg.GetAddress(); });
    Try([&] {
        const std::int64_t length = std::min<std::int64_t>(reg.GetLength(), sizeof bytes);
        reg.Get(bytes, length, verify);
        reg.Get(bytes, length / 2, verify, true);
        reg.Set(bytes, length, verify);
    });
}

void UseLinks(INode& node) {
    NodeList_t list;
    for (const ELinkType type : {ctParentNodes, ctReadingChildren, ctWritingChildren, ctInvalidatingChildren,
                                 ctDependingNodes, ctTerminalNodes})
        node.GetChildren(list, type);
    gcstring_vector names;
    gcstring value, attribute;
    node.GetPropertyNames(names);
    for (const gcstring& name : names)
        node.GetProperty(name, value, attribute);
    node.GetDisplayName();
    node.GetVisibility();
}

void Use(INode& node, FuzzInput& input) {
    const bool verify = (input.Take() & 1) != 0;
    node.GetAccessMode();
    if (auto* number = dynamic_cast<IInteger*>(&node))
        UseNumber(*number, input.Take<std::int64_t>(), verify);
    if (auto* number = dynamic_cast<IFloat*>(&node))
        UseNumber(*number, input.Take<double>(), verify);
    if (auto* boolean = dynamic_cast<IBoolean*>(&node)) {
        Try([&] { boolean->GetValue(verify); });
        Try([&] { boolean->SetValue(verify, verify); });
    }
    if (auto* command = dynamic_cast<ICommand*>(&node)) {
        Try([&] { command->Execute(verify); });
        Try([&] { command->IsDone(verify); });
    }
    if (auto* choice = dynamic_cast<IEnumeration*>(&node))
        UseChoice(*choice, input.Take(), verify);
    if (auto* text = dynamic_cast<IString*>(&node)) {
        Try([&] { text->GetMaxLength(); });
        Try([&] { text->SetValue(text->GetValue(verify), verify); });
    }
    if (auto* reg = dynamic_cast<IRegister*>(&node))
        UseRegister(*reg, verify);
    auto& value = dynamic_cast<IValue&>(node);
    Try([&] { value.FromString(value.ToString(verify), verify); });
    const char text[] = {static_cast<char>(input.Take()), static_cast<char>(input.Take()), '\0'};
    Try([&] { value.FromString(text, verify); });
    UseLinks(node);
}

void UseAll(INodeMap& map, FuzzInput& input) {
    NodeList_t nodes;
    map.GetNodes(nodes);
    std::size_t calls = 0;
    for (std::size_t i = 0; i < nodes.size(); ++i)
        Register(
            nodes[i], [&calls](INode*) { ++calls; }, i % 2 == 0 ? cbPostInsideLock : cbPostOutsideLock);
    constexpr std::size_t MostNodes = 100; // so that large descriptions cost no more than small ones
    nodes.resize(std::min(nodes.size(), MostNodes));
    for (int round = 0; round < 2 && (round == 0 || !input.Empty()); ++round) {
        for (INode* node : nodes)
            Use(*node, input);
        map.Poll(input.Take());
        map.InvalidateNodes();
    }
}

// Read once: what is fuzzed here is what nodes do with their registers.
const CNodeMapFactory& Known(std::size_t index) {
    static const auto read = [](std::size_t i) {
        return CNodeMapFactory(
            gcstring(("<RegisterDescription>" + std::string(Nodes[i]) + "</RegisterDescription>").c_str()));
    };
    static const CNodeMapFactory factories[NodesCount] = {read(0), read(1), read(2)};
    return factories[index];
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const std::size_t choice = input.Take() % (NodesCount + 1);
    Try([&] {
        const CNodeMapFactory factory =
            choice < NodesCount ? Known(choice) : CNodeMapFactory(gcstring(input.Line('\0').c_str()));
        HostilePort port(input);
        const std::unique_ptr<INodeMap, Destroyer> map(factory.CreateNodeMap("Device", false));
        map->Connect(&port);
        UseAll(*map, input);
    });
    return 0;
}
