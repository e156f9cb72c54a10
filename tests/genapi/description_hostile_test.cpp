// Descriptions that cannot be used: damaged, endless, swollen, or zipped wrongly. Each is refused in words.
#include "platform/genapi/description/Description.h"

#include "Base/GCException.h"

#include <gtest/gtest.h>
#include <zip.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace GenApi_3_2 {
namespace Engine {
namespace {

// The message with which the bytes are refused, empty when they are not.
std::string RefusalOf(const std::string& bytes) {
    try {
        Description::FromBytes(bytes, "camera.xml");
        return {};
    } catch (const GenICam_3_2::GenericException& error) {
        return error.GetDescription();
    }
}

void ExpectRefused(const std::string& bytes, const std::string& reason) {
    const std::string message = RefusalOf(bytes);
    EXPECT_NE(message.find("camera.xml"), std::string::npos) << message;
    EXPECT_NE(message.find(reason), std::string::npos) << message;
}

std::string Repeated(const std::string& text, std::size_t times) {
    std::string all;
    all.reserve(text.size() * times);
    while (times-- > 0)
        all += text;
    return all;
}

std::string Zip(const std::vector<std::pair<std::string, std::string>>& files) {
    zip_error_t error;
    zip_source_t* const target = zip_source_buffer_create(nullptr, 0, 0, &error);
    zip_source_keep(target);
    zip_t* const archive = zip_open_from_source(target, ZIP_TRUNCATE, &error);
    for (const auto& file : files)
        zip_file_add(archive, file.first.c_str(),
                     zip_source_buffer(archive, file.second.data(), file.second.size(), 0), ZIP_FL_ENC_UTF_8);
    EXPECT_EQ(zip_close(archive), 0);
    zip_stat_t stat;
    zip_source_open(target);
    zip_source_stat(target, &stat);
    std::string bytes(static_cast<std::size_t>(stat.size), '\0');
    zip_source_read(target, &bytes[0], bytes.size());
    zip_source_close(target);
    zip_source_free(target);
    return bytes;
}

const std::string Good = "<RegisterDescription>\n<Port Name='Device'/>\n</RegisterDescription>\n";

TEST(DescriptionHostile, DamagedTexts) {
    ExpectRefused("", "XML is damaged");
    ExpectRefused("\x7F"
                  "ELF",
                  "XML is damaged");
    ExpectRefused("<RegisterDescription>\n<Port Name='Device'/>\n", "line 2: XML is damaged");
    ExpectRefused("<RegisterDescription>\n<Port Name='Dev", "XML is damaged");
    ExpectRefused("<RegisterDescription>\n<Port></Integer></RegisterDescription>", "line 2: XML is damaged");
    ExpectRefused("\n<Other/>", "line 2: root element is 'Other'");
    ExpectRefused(Good.substr(0, 30) + std::string(1, '\0') + Good.substr(30), "NUL byte at offset 30");
    EXPECT_EQ(RefusalOf(Good + std::string(100, '\0')), ""); // padding of the camera's memory
    for (std::size_t length = 0; length < Good.size() - 1; ++length)
        EXPECT_NE(RefusalOf(Good.substr(0, length)), "") << length;
}

TEST(DescriptionHostile, EntitiesAreNotExpanded) {
    ExpectRefused("<!DOCTYPE r [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]>\n" + Good, "entities");
    EXPECT_EQ(RefusalOf("<!DOCTYPE RegisterDescription>\n" + Good), "");
    const auto description = Description::FromXml(
        "<RegisterDescription><String Name='S'><Value>&undefined;</Value></String></RegisterDescription>",
        "x");
    EXPECT_EQ(description->Text(description->Nodes()[0], ElementId::Value), "&undefined;");
}

TEST(DescriptionHostile, NestingIsBounded) {
    const auto nested = [](const std::string& name, std::size_t depth) {
        return "<RegisterDescription>" + Repeated("<" + name + ">", depth) +
               Repeated("</" + name + ">", depth) + "</RegisterDescription>";
    };
    EXPECT_EQ(RefusalOf(nested("Group", 60)), "");
    ExpectRefused(nested("Group", 100), "nest too deeply");
    ExpectRefused(nested("Group", 50000), "nest too deeply");
    ExpectRefused(nested("Extension", 50000), "nest too deeply");
    ExpectRefused("<RegisterDescription><Integer Name='W'>\n" + Repeated("<Value>", 50000) +
                      Repeated("</Value>", 50000) + "</Integer></RegisterDescription>",
                  "line 2, node 'W': elements nest too deeply");
}

TEST(DescriptionHostile, SizesAreBounded) {
    ExpectRefused(std::string(17u << 20, ' '), "larger than 16 MiB");
    ExpectRefused("<RegisterDescription>" + Repeated("<a/>", 500000) + "</RegisterDescription>",
                  "too many elements");
    ExpectRefused("<RegisterDescription>" + Repeated("\n", 16000000) + "</RegisterDescription>",
                  "too many elements");
    ExpectRefused("<RegisterDescription><Formula x='" + std::string(15u << 20, '=') +
                      "'/></RegisterDescription>",
                  "too many elements");
    ExpectRefused("<RegisterDescription><SwissKnife Name='K'><Formula>" + Repeated("1+", 600000) +
                      "1</Formula></SwissKnife></RegisterDescription>",
                  "node 'K': formulas are longer");
    // Entries that inherit much: few bytes, many records.
    std::string entries;
    for (int i = 0; i < 2000; ++i)
        entries += "<StructEntry Name='S" + std::to_string(i) + "'/>";
    ExpectRefused("<RegisterDescription><StructReg>" + Repeated("<Address>1</Address>", 1000) + entries +
                      "</StructReg></RegisterDescription>",
                  "too many elements");
    std::string nodes;
    for (int i = 0; i < 40000; ++i)
        nodes += "<Port Name='" + std::to_string(i) + "'/>";
    ExpectRefused("<RegisterDescription>" + nodes + "</RegisterDescription>", "more than 32768 nodes");
}

TEST(DescriptionHostile, ProblemsAreCountedButNotHoarded) {
    const auto description = Description::FromXml(
        "<RegisterDescription>" + Repeated("<Gadget Name='G'/>", 5000) + Good.substr(21), "x");
    EXPECT_EQ(description->Problems().size(), Description::MaxProblems);
    EXPECT_EQ(description->SuppressedProblems(), 5000 - Description::MaxProblems);
    EXPECT_EQ(description->Nodes().size(), 1u);
}

TEST(DescriptionHostile, ZipArchives) {
    const std::string good = Zip({{"readme.txt", "hello"}, {"folder/Camera.XML", Good}});
    EXPECT_EQ(RefusalOf(good), "");
    EXPECT_EQ(UnpackDescription(good, "x"), Good);
    ExpectRefused(Zip({{"readme.txt", "hello"}}), "no .xml");
    ExpectRefused(Zip({{"a.xml", Good}, {"b.xml", Good}}), "more than one");
    ExpectRefused(Zip({{"a.xml", std::string(30u << 20, ' ')}}), "larger than 16 MiB");
    for (std::size_t length = 4; length < good.size(); length += 7)
        ExpectRefused(good.substr(0, length), "zip archive");
    for (std::size_t i = 0; i < good.size();
         ++i) { // any single byte: refused in words or read, never a crash
        std::string damaged = good;
        damaged[i] = static_cast<char>(damaged[i] ^ 0x55);
        RefusalOf(damaged);
    }
}

TEST(DescriptionHostile, Files) {
    const std::string path = ::testing::TempDir() + "/description_hostile_test.zip";
    std::ofstream(path, std::ios::binary) << Zip({{"a.xml", "\xEF\xBB\xBF" + Good}});
    EXPECT_EQ(Description::FromFile(path)->Nodes().size(), 1u);
    std::remove(path.c_str());
    EXPECT_THROW(Description::FromFile(path), GenICam_3_2::GenericException);
    EXPECT_THROW(Description::FromFile(::testing::TempDir()), GenICam_3_2::GenericException);
}

} // namespace
} // namespace Engine
} // namespace GenApi_3_2
