// What libhostmgr.so shows to the loader: the 70 functions of exports.txt, with exactly these parameter types, and
// nothing else; the name it goes by and the libraries it asks for. The file is looked at from outside, not loaded.
#include <cxxabi.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

using testing::Contains;
using testing::HasSubstr;
using testing::UnorderedElementsAreArray;

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool SANITIZED = true;
#else
constexpr bool SANITIZED = false;
#endif

std::vector<std::string> Lines(std::istream& text) {
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> OutputOf(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::stringstream output;
    char buffer[4096];
    for (size_t size; pipe != nullptr && (size = fread(buffer, 1, sizeof(buffer), pipe.get())) > 0;) {
        output.write(buffer, static_cast<std::streamsize>(size));
    }
    return Lines(output);
}

std::string Demangled(const std::string& symbol) {
    int status = -1;
    const std::unique_ptr<char, void (*)(void*)> name(abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status),
                                                      free);
    return status == 0 ? name.get() : symbol;
}

/** The symbols that others can link to, demangled. */
std::vector<std::string> Exported() {
    std::vector<std::string> names;
    for (const std::string& line : OutputOf(NM " -D --defined-only --format=posix --no-demangle " HOSTMGR_LIBRARY)) {
        names.push_back(Demangled(line.substr(0, line.find(' '))));
    }
    return names;
}

/** The bracketed values of one tag of the dynamic section: libraries, names. */
std::vector<std::string> DynamicValues(const std::string& tag) {
    std::vector<std::string> values;
    for (const std::string& line : OutputOf(READELF " --dynamic --wide " HOSTMGR_LIBRARY)) {
        const size_t begin = line.find('[');
        const size_t end = line.rfind(']');
        if (line.find("(" + tag + ")") != std::string::npos && begin < end) {
            values.push_back(line.substr(begin + 1, end - begin - 1));
        }
    }
    return values;
}

/** What every C++ program needs; a compiler may ask for all of it. */
bool IsRuntime(const std::string& library) {
    for (const char* name : {"libstdc++.so.", "libc.so.", "libgcc_s.so.", "libm.so.", "ld-linux"}) {
        if (library.rfind(name, 0) == 0) {
            return true;
        }
    }
    return SANITIZED && (library.rfind("libasan.so.", 0) == 0 || library.rfind("libtsan.so.", 0) == 0 ||
                         library.rfind("libubsan.so.", 0) == 0);
}

TEST(Exports, DynamicSymbols_AreTheCatalogueExactly) {
    std::ifstream file(EXPORTS_LIST);
    const std::vector<std::string> catalogue = Lines(file);
    ASSERT_EQ(catalogue.size(), 70U);
    EXPECT_THAT(Exported(), UnorderedElementsAreArray(catalogue));
}

TEST(Exports, Soname_IsTheFilesName) {
    EXPECT_EQ(DynamicValues("SONAME"), std::vector<std::string>{"libhostmgr.so"});
}

TEST(Exports, Needed_RecorderLibrariesAndRuntimeAlone) {
    std::vector<std::string> recorder;
    for (const std::string& library : DynamicValues("NEEDED")) {
        if (!IsRuntime(library)) {
            recorder.push_back(library);
        }
    }
    EXPECT_THAT(recorder, UnorderedElementsAreArray({"libmodel.so", "libcfgm.so", "libutility_plat.so"}));
}

// Its alarm thread never ends, so its code must stay.
TEST(Exports, Flags_ForbidUnloading) {
    EXPECT_THAT(OutputOf(READELF " --dynamic --wide " HOSTMGR_LIBRARY), Contains(HasSubstr("NODELETE")));
}

}  // namespace
