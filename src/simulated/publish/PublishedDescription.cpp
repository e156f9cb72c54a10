#include "simulated/publish/PublishedDescription.h"

#include "platform/archive/ZipArchive.h"
#include "vx3/core/Utilities.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>
#include <pugixml.hpp>
#include <sstream>
#include <utility>

namespace VX3 {

namespace {

using pugi::xml_node;

constexpr const char* PortName = "Device";
constexpr unsigned MostLinks = 8; // from a feature to its register

// Replace features of the same names.
constexpr const char* ServerFeatures = R"(<Group Comment="Of the server that publishes this camera">
<Integer Name="GevSCPSPacketSize" NameSpace="Standard"><ToolTip>Bytes of a stream packet, IP and UDP headers included</ToolTip>
  <Visibility>Expert</Visibility><pValue>ServerPacketSizeReg</pValue><Min>576</Min><Max>16000</Max><Inc>4</Inc></Integer>
<MaskedIntReg Name="ServerPacketSizeReg"><Address>0xD04</Address><Length>4</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort><Cachable>NoCache</Cachable><LSB>31</LSB><MSB>16</MSB><Sign>Unsigned</Sign>
  <Endianess>BigEndian</Endianess></MaskedIntReg>
<Integer Name="GevSCPD" NameSpace="Standard"><ToolTip>Delay between stream packets, in ticks of the time stamp</ToolTip>
  <Visibility>Expert</Visibility><pValue>ServerPacketDelayReg</pValue><Min>0</Min><Max>1000000000</Max></Integer>
<IntReg Name="ServerPacketDelayReg"><Address>0xD08</Address><Length>4</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort><Cachable>NoCache</Cachable><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
<Integer Name="GevHeartbeatTimeout" NameSpace="Standard"><ToolTip>Milliseconds of silence until control ends</ToolTip>
  <Visibility>Guru</Visibility><pValue>ServerHeartbeatReg</pValue><Min>500</Min><Max>600000</Max></Integer>
<IntReg Name="ServerHeartbeatReg"><Address>0x938</Address><Length>4</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort><Cachable>NoCache</Cachable><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
<IntReg Name="GevTimestampTickFrequency" NameSpace="Standard"><ToolTip>Ticks of the time stamp in a second</ToolTip>
  <Visibility>Expert</Visibility><Address>0x93C</Address><Length>8</Length><AccessMode>RO</AccessMode>
  <pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
<Command Name="GevTimestampControlLatch" NameSpace="Standard"><ToolTip>Latches the time stamp</ToolTip>
  <Visibility>Expert</Visibility><pInvalidator>GevTimestampValue</pInvalidator><pValue>ServerTimestampReg</pValue>
  <CommandValue>2</CommandValue></Command>
<IntReg Name="ServerTimestampReg"><Address>0x944</Address><Length>4</Length><AccessMode>WO</AccessMode>
  <pPort>Device</pPort><Cachable>NoCache</Cachable><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
<IntReg Name="GevTimestampValue" NameSpace="Standard"><ToolTip>The time stamp as it was latched</ToolTip>
  <Visibility>Expert</Visibility><Address>0x948</Address><Length>8</Length><AccessMode>RO</AccessMode>
  <pPort>Device</pPort><Cachable>NoCache</Cachable><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>
</Group>)";
// Where the command of a camera whose register cannot be told from the description is written instead.
constexpr const char* ServerCommandReg =
    R"(<IntReg Name="ServerCommandReg"><Address>0xFB0</Address><Length>4</Length><AccessMode>RW</AccessMode>
  <pPort>Device</pPort><Cachable>NoCache</Cachable><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>)";
constexpr const char* Category = "TransportLayerControl";

std::optional<std::uint64_t> Number(const char* text) {
    char* end = nullptr;
    while (*text == ' ' || *text == '\n' || *text == '\t' || *text == '\r')
        ++text;
    const bool hexadecimal = text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const unsigned long long value = std::strtoull(text, &end, hexadecimal ? 16 : 10);
    return end != text ? std::optional<std::uint64_t>(value) : std::nullopt;
}

bool IsAddressPiece(const char* name) {
    for (const char* piece : {"Address", "pAddress", "IntSwissKnife", "pIndex"})
        if (std::strcmp(name, piece) == 0)
            return true;
    return false;
}

// Of every GigE Vision camera: identity, URLs and network, capabilities and control, message and stream
// channels. What lies between belongs to some cameras' own features.
bool IsStandardRegister(std::uint64_t address) {
    constexpr std::pair<std::uint64_t, std::uint64_t> Ranges[] = {
        {0x0000, 0x0100}, {0x0200, 0x0700}, {0x0900, 0x0C00}, {0x0D00, 0x0E00}};
    for (const auto& [first, end] : Ranges)
        if (address >= first && address < end)
            return true;
    return false;
}

bool HasAddress(xml_node node) {
    for (const xml_node child : node.children())
        if (IsAddressPiece(child.name()))
            return true;
    return false;
}

class Rewriter {
public:
    Rewriter(pugi::xml_document& document, PublishedDescription& result, bool gigEVision)
        : root_(document.child("RegisterDescription")), result_(result), gigEVision_(gigEVision) {
        Index(root_);
    }

    void Run() {
        for (const char* feature : {"AcquisitionStart", "AcquisitionStop", "TLParamsLocked"})
            Ignore(feature);
        Replace();
        for (const xml_node node : all_)
            if (std::strcmp(node.child_value("pPort"), PortName) == 0)
                Move(node);
        xml_node category = Find(Category);
        if (!category)
            category = AddCategory();
        for (const char* feature :
             {"GevSCPSPacketSize", "GevSCPD", "GevHeartbeatTimeout", "GevTimestampTickFrequency",
              "GevTimestampControlLatch", "GevTimestampValue"})
            if (!HasFeature(category, feature))
                category.append_child("pFeature").text().set(feature);
        AppendFragment(ServerFeatures);
        if (needsCommandReg_)
            AppendFragment(ServerCommandReg);
        // Whoever keeps descriptions by their versions must not take this one for the camera's own.
        if (pugi::xml_attribute version = root_.attribute("VersionGuid")) {
            std::string guid = version.value();
            guid.replace(0, std::min<std::size_t>(8, guid.size()), "5E6F2A10");
            version.set_value(guid.c_str());
        }
    }

private:
    void Index(xml_node parent) {
        for (const xml_node child : parent.children()) {
            if (std::strcmp(child.name(), "Group") == 0 && parent == root_) {
                Index(child);
                continue;
            }
            all_.push_back(child); // structures have no names
            if (const char* name = child.attribute("Name").value(); *name != '\0')
                nodes_.emplace(name, child);
        }
    }
    xml_node Find(const char* name) const {
        const auto found = nodes_.find(name);
        return found != nodes_.end() ? found->second : xml_node();
    }
    // As far as it does not depend on other registers; `whole`: on none at all.
    std::uint64_t StaticAddress(xml_node node, bool& whole) const {
        std::uint64_t sum = 0;
        for (const xml_node child : node.children()) {
            if (!IsAddressPiece(child.name()))
                continue;
            const bool plain = std::strcmp(child.name(), "Address") == 0;
            const bool link = std::strcmp(child.name(), "pAddress") == 0;
            const char* const text = plain  ? child.child_value()
                                     : link ? Find(child.child_value()).child_value("Value")
                                            : "";
            const std::optional<std::uint64_t> number = Number(text);
            sum += number.value_or(0);
            whole = whole && number.has_value();
        }
        return sum;
    }
    // The feature's register is the first node behind it that has an address.
    void Ignore(const char* feature) {
        xml_node node = Find(feature);
        if (!node)
            return;
        for (unsigned link = 0; node && link < MostLinks; ++link) {
            if (HasAddress(node)) {
                bool whole = true;
                const std::uint64_t address = StaticAddress(node, whole);
                if (whole) {
                    result_.ignoredRegisters.push_back(address);
                    return;
                }
                break;
            }
            node = Find(node.child_value("pValue")); // none: a value of its own
        }
        xml_node top = Find(feature);
        if (!node && std::strcmp(top.name(), "Command") != 0)
            return;
        // The server wants to know of commands, whatever the camera does with them.
        needsCommandReg_ = true;
        while (top.remove_child("pValue") || top.remove_child("Value"))
            continue;
        top.append_child("pValue").text().set("ServerCommandReg");
    }
    void Replace() {
        for (const char* feature :
             {"GevSCPSPacketSize", "GevSCPD", "GevHeartbeatTimeout", "GevTimestampTickFrequency",
              "GevTimestampControlLatch", "GevTimestampValue", "ServerPacketSizeReg", "ServerPacketDelayReg",
              "ServerHeartbeatReg", "ServerTimestampReg", "ServerCommandReg"}) {
            const auto found = nodes_.find(feature);
            if (found == nodes_.end())
                continue;
            xml_node parent = found->second.parent();
            all_.erase(std::find(all_.begin(), all_.end(), found->second));
            parent.remove_child(found->second);
            nodes_.erase(found);
        }
    }
    void Move(xml_node node) {
        bool whole = true;
        const std::uint64_t address = StaticAddress(node, whole);
        if (gigEVision_ && IsStandardRegister(address) && (whole || node.child("Address")))
            return;
        const std::optional<std::int64_t> shift = result_.window.ShiftOf(address);
        if (!shift)
            return; // beyond the window: answered as an address that does not exist
        xml_node place = node.first_child();
        while (place && !IsAddressPiece(place.name()))
            place = place.next_sibling();
        xml_node piece = place ? node.insert_child_before("Address", place)
                               : node.insert_child_before("Address", node.child("pPort"));
        piece.text().set(StringFormat("%lld", static_cast<long long>(*shift)).c_str());
    }
    void AppendFragment(const char* text) { (void)root_.append_buffer(text, std::strlen(text)); }
    xml_node AddCategory() {
        xml_node category = root_.append_child("Category");
        category.append_attribute("Name").set_value(Category);
        category.append_attribute("NameSpace").set_value("Standard");
        if (xml_node top = Find("Root"))
            top.append_child("pFeature").text().set(Category);
        return category;
    }
    static bool HasFeature(xml_node category, const char* feature) {
        for (const xml_node child : category.children("pFeature"))
            if (std::strcmp(child.child_value(), feature) == 0)
                return true;
        return false;
    }

    xml_node root_;
    PublishedDescription& result_;
    const bool gigEVision_;
    bool needsCommandReg_ = false;
    std::vector<xml_node> all_;
    std::map<std::string, xml_node> nodes_;
};

// Letters that stand in any URL and in any file system.
std::string FileName(const std::string& name) {
    constexpr std::size_t Longest = 40;
    std::string safe;
    for (const char c : name.substr(0, Longest)) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        safe += plain ? c : '_';
    }
    return safe.empty() ? "camera" : safe;
}

} // namespace

PublishedDescription PublishedDescription::Make(const std::string& name, std::string_view description,
                                                bool gigEVision) {
    PublishedDescription result;
    ZipContent content;
    if (IsZipArchive(description)) {
        content = UnzipOnly(description, ".xml");
        description = content.bytes;
    }
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_buffer(description.data(), description.size());
    if (!content.failure.empty()) {
        result.failure = content.failure;
    } else if (!parsed) {
        result.failure = parsed.description();
    } else if (!document.child("RegisterDescription")) {
        result.failure = "it describes no registers";
    } else {
        Rewriter(document, result, gigEVision).Run();
        std::ostringstream text;
        document.save(text, "", pugi::format_raw);
        result.archive = ZipOne(FileName(name) + ".xml", text.str());
        const bool fits = result.archive.size() <= AddressWindow::Pages - AddressWindow::Description;
        if (result.archive.empty() || !fits)
            result.failure = "it cannot be packed";
        else
            result.url = StringFormat("Local:%s.zip;%X;%zX", FileName(name).c_str(),
                                      AddressWindow::Description, result.archive.size());
    }
    return result;
}

} // namespace VX3
