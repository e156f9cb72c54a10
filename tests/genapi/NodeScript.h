// Node maps in shorthand. A description names node after node, parted by line ends and " ; ":
//     Integer Outer pValue=Inner pMax=Limit              elements as name=text
//     IntReg Reg @0x10:4 Cachable=NoCache                a big-endian register, readable and writable, at
//     0x10 Enumeration E :Off=0 :On=1,NumericValue=2.5        entries with their value and further elements
//     StructReg S @0x40:4 /Upper,LSB=15,MSB=0            a field with its elements
//     pVariable.A=  ValueIndexed[1=  pIndex+4=  pIndex*Stride=       attributes Name, Index, Offset, pOffset
// What begins with '<' is XML. Steps are parted likewise:
//     Outer = 5       typed write, := unverified, <- by text       @0x10 = AA      puts a word into the
//     device Outer ? 5       typed read, ?? past the cache, ?v verified   @0x10 ? AA      looks at it Outer
//     max 9     any question below                           reads 2         port accesses since last asked
// A section is "== Name", its description, a line "--" and its steps.
// An expectation matches as text or number; "~part" is a part of it, "!Access" a thrown AccessException, and
// "!Access~part" one whose text holds that part.
#pragma once

#include "support/TestNodeMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace VX3::Test {

using namespace GenApi_3_2;

inline std::string XmlElement(const std::string& item) {
    static const std::map<char, std::string> Attributes = {
        {'.', "Name"}, {'[', "Index"}, {'+', "Offset"}, {'*', "pOffset"}};
    const std::size_t equals = item.find('=');
    const std::size_t end = std::min(equals, item.find_first_of(".[+*"));
    const std::string name = item.substr(0, end);
    std::string xml = "<" + name;
    if (end < equals)
        xml += " " + Attributes.at(item[end]) + "=\"" + item.substr(end + 1, equals - end - 1) + "\"";
    xml += ">";
    for (const char c : item.substr(equals + 1))
        xml += c == '<' ? "&lt;" : c == '&' ? "&amp;" : std::string(1, c);
    return xml + "</" + name + ">";
}

// "Off=0,pIsAvailable=X" or "Upper,LSB=15": a node inside another one.
inline std::string XmlInner(const std::string& kind, const std::string& text) {
    std::istringstream items(text);
    std::string name, item;
    std::getline(items, name, ',');
    const std::size_t equals = name.find('=');
    std::string xml = "<" + kind + " Name=\"" + name.substr(0, equals) + "\">";
    if (equals != std::string::npos)
        xml += XmlElement("Value" + name.substr(equals));
    while (std::getline(items, item, ','))
        xml += XmlElement(item);
    return xml + "</" + kind + ">";
}

inline std::string XmlNode(const std::string& line) {
    std::istringstream tokens(line);
    std::string kind, name, item;
    tokens >> kind >> name;
    std::string xml = "<" + kind + (kind == "StructReg" ? " Comment" : " Name") + "=\"" + name + "\">";
    while (tokens >> item)
        if (item[0] == '@')
            xml += XmlElement("Address=" + item.substr(1, item.find(':') - 1)) +
                   XmlElement("Length=" + item.substr(item.find(':') + 1)) +
                   "<AccessMode>RW</AccessMode><pPort>Device</pPort><Endianess>BigEndian</Endianess>";
        else if (item[0] == ':' || item[0] == '/')
            xml += XmlInner(item[0] == ':' ? "EnumEntry" : "StructEntry", item.substr(1));
        else
            xml += XmlElement(item);
    return xml + "</" + kind + ">";
}

// Calls `use` for the parts between line ends and " ; ".
template <class Use>
void ForEachPart(const std::string& text, Use use) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        for (std::size_t start = 0, end; start < line.size(); start = end + 3) {
            end = std::min(line.size(), line.find(" ; ", start));
            use(line.substr(start, end - start));
        }
}

inline std::string XmlNodes(const std::string& shorthand) {
    std::string xml;
    ForEachPart(shorthand,
                [&](const std::string& part) { xml += (part[0] == '<' ? part : XmlNode(part)) + "\n"; });
    return xml;
}

inline std::int64_t IntegerIn(const std::string& text) {
    return text[0] == '-' ? std::strtoll(text.c_str(), nullptr, 0)
                          : static_cast<std::int64_t>(std::strtoull(text.c_str(), nullptr, 0));
}

template <class T>
std::string Shown(T value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", static_cast<double>(value));
    return std::is_floating_point_v<T> ? text : std::to_string(static_cast<std::int64_t>(value));
}
inline std::string Shown(const gcstring& text) {
    return text.c_str();
}
inline std::string Shown(INode* node) {
    return node ? Shown(node->GetName()) : "none";
}
inline std::string Shown(IValue* value) {
    return value ? Shown(value->GetNode()) : "none";
}
template <class List>
std::string Joined(const List& list) {
    std::string text;
    for (const auto& item : list)
        text += (text.empty() ? "" : ",") + Shown(item);
    return text;
}
template <class List, class Fill>
std::string Filled(Fill fill) {
    List list;
    fill(list);
    return Joined(list);
}

inline bool Matches(const std::string& expected, const std::string& actual) {
    const std::size_t part = expected.find('~');
    if (expected[0] == '!' || part == 0)
        return actual.compare(0, std::min(part, expected.size()), expected, 0, part) == 0 &&
               (part == std::string::npos || actual.find(expected.substr(part + 1)) != std::string::npos);
    if (expected == actual || expected.empty() || actual.empty())
        return expected == actual;
    char* end = nullptr;
    char* rest = nullptr;
    const double wanted = std::strtod(expected.c_str(), &end);
    const double real = std::strtod(actual.c_str(), &rest);
    if (actual.find_first_not_of("-0123456789") == std::string::npos)
        return *end == '\0' && expected.find('.') == std::string::npos &&
               IntegerIn(expected) == IntegerIn(actual);
    return *end == '\0' && *rest == '\0' && std::abs(wanted - real) <= 1e-14 * std::abs(wanted);
}

// A node by all its faces; null where it has none.
struct Faces {
    explicit Faces(INode& n) : node(n) {}
    INode& node;
    IValue* value = dynamic_cast<IValue*>(&node);
    IInteger* integer = dynamic_cast<IInteger*>(&node);
    IFloat* real = dynamic_cast<IFloat*>(&node);
    IBoolean* boolean = dynamic_cast<IBoolean*>(&node);
    IEnumeration* choice = dynamic_cast<IEnumeration*>(&node);
    IEnumEntry* entry = dynamic_cast<IEnumEntry*>(&node);
    IString* string = dynamic_cast<IString*>(&node);
    IRegister* reg = dynamic_cast<IRegister*>(&node);
    ICommand* command = dynamic_cast<ICommand*>(&node);
    ISelector* selector = dynamic_cast<ISelector*>(&node);

    std::string Read(bool verify, bool ignoreCache) const {
        if (boolean)
            return Shown(boolean->GetValue(verify, ignoreCache));
        if (choice || entry)
            return Shown(choice ? choice->GetIntValue(verify, ignoreCache) : entry->GetValue());
        if (string)
            return Shown(string->GetValue(verify, ignoreCache));
        return integer ? Shown(integer->GetValue(verify, ignoreCache))
                       : Shown(real->GetValue(verify, ignoreCache));
    }

    void Do(const std::string& verb, const std::string& text) const {
        const std::int64_t number = IntegerIn(text);
        const double fraction = std::atof(text.c_str());
        const bool verify = verb == "=";
        if (verb == "<-")
            value->FromString(text.c_str());
        else if (verb == "execute")
            command->Execute();
        else if (verb == "invalidate")
            node.InvalidateNode();
        else if (verb == "readonly")
            node.ImposeAccessMode(RO);
        else if (verb == "imposemin")
            integer ? integer->ImposeMin(number) : real->ImposeMin(fraction);
        else if (verb == "imposemax")
            integer ? integer->ImposeMax(number) : real->ImposeMax(fraction);
        else if (boolean)
            boolean->SetValue(number != 0, verify);
        else if (choice)
            choice->SetIntValue(number, verify);
        else if (string)
            string->SetValue(text.c_str(), verify);
        else
            integer ? integer->SetValue(number, verify) : real->SetValue(fraction, verify);
    }

    std::string Children(ELinkType type) const {
        return Filled<NodeList_t>([&](auto& list) { node.GetChildren(list, type); });
    }

    std::string Property(const std::string& name) const {
        gcstring text, attribute;
        const bool isThere = node.GetProperty(name.c_str(), text, attribute);
        std::string all = (isThere ? "" : "none") + Shown(text) + "|" + Shown(attribute);
        std::replace(all.begin(), all.end(), '\t', ',');
        return all;
    }
};

using Question = std::string (*)(const Faces&);
inline const std::map<std::string, Question>& Questions() {
    using F = const Faces&;
    static const std::map<std::string, Question> questions = {
        {"?", [](F f) { return f.Read(false, false); }},
        {"??", [](F f) { return f.Read(false, true); }},
        {"?v", [](F f) { return f.Read(true, false); }},
        {"text", [](F f) { return Shown(f.value->ToString()); }},
        {"mode", [](F f) { return std::string("NINAWORORW").substr(2 * f.node.GetAccessMode(), 2); }},
        {"cached", [](F f) { return Shown(f.value->IsValueCacheValid()); }},
        {"caching", [](F f) { return Shown(f.node.GetCachingMode()); }},
        {"keepsmode", [](F f) { return Shown(f.node.IsAccessModeCacheable()); }},
        {"visibility", [](F f) { return Shown(f.node.GetVisibility()); }},
        {"polling", [](F f) { return Shown(f.node.GetPollingTime()); }},
        {"min", [](F f) { return f.integer ? Shown(f.integer->GetMin()) : Shown(f.real->GetMin()); }},
        {"max", [](F f) { return f.integer ? Shown(f.integer->GetMax()) : Shown(f.real->GetMax()); }},
        {"inc", [](F f) { return f.integer ? Shown(f.integer->GetInc()) : Shown(f.real->GetInc()); }},
        {"incmode", [](F f) { return Shown(f.integer ? f.integer->GetIncMode() : f.real->GetIncMode()); }},
        {"values", [](F f) { return Joined(f.integer->GetListOfValidValues()); }},
        {"allvalues", [](F f) { return Joined(f.integer->GetListOfValidValues(false)); }},
        {"representation",
         [](F f) { return Shown(f.integer ? f.integer->GetRepresentation() : f.real->GetRepresentation()); }},
        {"unit", [](F f) { return Shown(f.integer ? f.integer->GetUnit() : f.real->GetUnit()); }},
        {"aliases", [](F f) { return Shown(f.node.GetAlias()) + "," + Shown(f.node.GetCastAlias()); }},
        {"address", [](F f) { return Shown(f.reg->GetAddress()); }},
        {"length", [](F f) { return Shown(f.reg->GetLength()); }},
        {"maxlength", [](F f) { return Shown(f.string->GetMaxLength()); }},
        {"numeric", [](F f) { return Shown(f.entry->GetNumericValue()); }},
        {"current", [](F f) { return Shown(dynamic_cast<IValue*>(f.choice->GetCurrentEntry())); }},
        {"symbolics",
         [](F f) { return Filled<StringList_t>([&](auto& list) { f.choice->GetSymbolics(list); }); }},
        {"done", [](F f) { return Shown(f.command->IsDone()); }},
        {"reading", [](F f) { return f.Children(ctReadingChildren); }},
        {"writing", [](F f) { return f.Children(ctWritingChildren); }},
        {"invalidating", [](F f) { return f.Children(ctInvalidatingChildren); }},
        {"parents", [](F f) { return f.Children(ctParentNodes); }},
        {"depending", [](F f) { return f.Children(ctDependingNodes); }},
        {"terminals", [](F f) { return f.Children(ctTerminalNodes); }},
        {"selected",
         [](F f) { return Filled<FeatureList_t>([&](auto& l) { f.selector->GetSelectedFeatures(l); }); }},
        {"selecting",
         [](F f) { return Filled<FeatureList_t>([&](auto& l) { f.selector->GetSelectingFeatures(l); }); }},
    };
    return questions;
}

class NodeScript {
public:
    explicit NodeScript(const std::string& shorthand, bool connect = true)
        : nodes(XmlNodes(shorthand), connect) {}

    void Run(const std::string& steps) {
        ForEachPart(steps, [this](const std::string& step) { Step(step); });
    }

    VX3::Test::TestNodeMap nodes;

private:
    void Step(const std::string& step) {
        std::istringstream words(step);
        std::string subject, verb, rest, actual;
        words >> subject >> verb >> std::ws;
        std::getline(words, rest);
        try {
            actual = subject[0] == '@' || !nodes.map->GetNode(subject.c_str()) ? OfDevice(subject, verb, rest)
                                                                               : OfNode(subject, verb, rest);
        } catch (const GenICam_3_2::GenericException& failure) {
            const std::string what = failure.what();
            const std::string kind = what.substr(0, what.find("Exception thrown"));
            actual = "!" + kind.substr(kind.rfind(' ') + 1) + ": " + failure.GetDescription();
        }
        EXPECT_TRUE(Matches(rest, actual)) << "step '" << step << "' gave '" << actual << "'";
    }

    std::string OfDevice(const std::string& subject, const std::string& verb, std::string& rest) {
        const std::function<void(std::int64_t)> none, fail = [](std::int64_t) { throw "no answer"; };
        const auto word = static_cast<std::uint32_t>(std::strtoul(rest.c_str(), nullptr, 16));
        const auto address = static_cast<std::size_t>(IntegerIn(subject.substr(1)));
        int& count = subject == "reads" ? nodes.port.reads : nodes.port.writes;
        if (subject[0] == '@' && verb == "?")
            return nodes.port.Word(address) == word ? rest : Shown(nodes.port.Word(address));
        if (subject[0] == '@') {
            nodes.port.Put(address, word);
        } else if (subject == "poll") {
            nodes.map->Poll(IntegerIn(verb));
        } else if (subject == "fail") { // "reads", "writes", or "none"
            nodes.port.onRead = verb == "reads" ? fail : none;
            nodes.port.onWrite = verb == "writes" ? fail : none;
        } else {
            EXPECT_EQ(verb, Shown(std::exchange(count, 0))) << subject;
        }
        return rest;
    }

    std::string OfNode(const std::string& subject, const std::string& verb, std::string& rest) {
        const Faces faces(nodes.Node(subject));
        const auto question = Questions().find(verb);
        if (question != Questions().end())
            return question->second(faces);
        if (verb == "problem")
            return nodes.ProblemOf(subject);
        if (verb.substr(0, 9) == "property:")
            return faces.Property(verb.substr(9));
        if (verb == "calls") { // counted from the first time they are asked for
            auto& calls = calls_[subject];
            if (!calls)
                Register(&faces.node, [&calls](INode*) { ++*calls; });
            else
                return Shown(std::exchange(*calls, 0));
            calls = std::make_unique<int>(0);
            return "0";
        }
        // What is left writes: its argument ends where an expected failure begins.
        const std::size_t mark = std::min(rest.size(), rest.find("!"));
        const std::string argument = rest.substr(0, mark == 0 ? 0 : rest.find_last_not_of(' ', mark - 1) + 1);
        rest.erase(0, mark);
        faces.Do(verb, argument);
        return "";
    }

    std::map<std::string, std::unique_ptr<int>> calls_;
};

struct Section {
    std::string name, nodes, steps;
};
inline void PrintTo(const Section& section, std::ostream* stream) {
    *stream << section.name;
}

inline std::vector<Section> Sections(const std::string& text) {
    std::vector<Section> sections;
    std::string* part = nullptr;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (line.substr(0, 3) == "== ") {
            sections.push_back({line.substr(3), "", ""});
            part = &sections.back().nodes;
        } else if (line == "--") {
            part = &sections.back().steps;
        } else if (part) {
            *part += line + "\n";
        }
    return sections;
}

} // namespace VX3::Test
