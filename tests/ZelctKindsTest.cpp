// The document kinds are one table: each row names the class that reads the kind and its
// header, and the fuzz targets and the record tests are held to it here, so that a kind added
// there without its fuzz target, its seed corpus or its record test fails at once.
#include <gtest/gtest.h>

#include <cxxabi.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <typeinfo>

#include "Kinds.h"
#include "RecordKinds.h"

namespace {

const std::string kSourceDir = std::string(ZELCT_EXAMPLES_DIR) + "/..";

std::string textOf(const std::string& path) {
    std::ifstream in(path);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string demangled(const char* name) {
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> text(
        abi::__cxa_demangle(name, nullptr, nullptr, &status), std::free);
    return status == 0 ? text.get() : name;
}

// "TarvikInfo.h" -> "TarvikInfo": the fuzz target and the corpus of a header carry its stem.
std::string stemOf(const std::string& header) {
    return header.substr(0, header.rfind('.'));
}

bool namesWord(const std::string& text, const std::string& word) {
    for (size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
        const auto isNamePart = [](char c) {
            return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
        };
        const bool before = at > 0 && isNamePart(text[at - 1]);
        const bool after = at + word.size() < text.size() && isNamePart(text[at + word.size()]);
        if (!before && !after) {
            return true;
        }
    }
    return false;
}

TEST(ZelctKinds, EachRowMakesAnObjectOfTheClassItNamesDeclaredInItsHeader) {
    for (const zelct::Kind& kind : zelct::allKinds()) {
        const std::unique_ptr<IJsonSerializable> object = kind.make();
        ASSERT_NE(nullptr, object) << kind.name;
        EXPECT_EQ(kind.className, demangled(typeid(*object).name())) << kind.name;
        const std::string header = textOf(std::string(ZELCT_INCLUDE_DIR) + "/" + kind.header);
        const std::string name = kind.className;
        EXPECT_TRUE(namesWord(header, "class ZELCOMMONTYPES_API " + name) ||
                    namesWord(header, "struct ZELCOMMONTYPES_API " + name))
            << kind.name << " in " << kind.header;
    }
}

TEST(ZelctKinds, EachClassIsReadByTheFuzzTargetOfItsHeaderFromASeedCorpus) {
    for (const zelct::Kind& kind : zelct::allKinds()) {
        const std::string stem = stemOf(kind.header);
        const std::string target = textOf(kSourceDir + "/fuzz/" + stem + "Fuzz.cpp");
        EXPECT_TRUE(namesWord(target, kind.className))
            << kind.name << ": fuzz/" << stem << "Fuzz.cpp";
        const std::filesystem::path corpus = kSourceDir + "/fuzz/corpus/" + stem;
        EXPECT_TRUE(std::filesystem::is_directory(corpus) && !std::filesystem::is_empty(corpus))
            << kind.name << ": " << corpus;
    }
}

// A list kind is read element by element by its element's class, whose record is tested.
TEST(ZelctKinds, EachObjectKindIsARecordOfTheRecordTests) {
    const std::vector<zelct_test::Kind> records = zelct_test::kinds();
    for (const zelct::Kind& kind : zelct::allKinds()) {
        if (kind.topLevel != zelct::TopLevel::Object) {
            continue;
        }
        const auto record = std::find_if(
            records.begin(), records.end(),
            [&](const zelct_test::Kind& r) { return std::string(r.name) == kind.className; });
        ASSERT_NE(records.end(), record) << kind.name;
        EXPECT_STREQ(kind.header, record->header) << kind.name;
    }
}

}  // namespace
