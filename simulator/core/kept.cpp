#include "core/kept.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <utility>
#include <vector>

#include "core/home.h"

namespace simulator {
namespace {

struct Owner {
    KeptPart part;
    std::function<void()> forget;
};

struct Owners {
    std::mutex lock;
    std::vector<Owner> list;
};

Owners& TheOwners() {
    static Owners& owners = *new Owners;
    return owners;
}

std::string PathOf(const std::string& name) {
    return HomePath() + "/" + name + ".json";
}

/** Under a name of its own first, so that a reader never sees half a document, whichever process writes. */
bool WriteWhole(const std::string& path, const std::string& text) {
    const std::string aside = path + "." + std::to_string(getpid());
    std::ofstream file(aside, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    if (file.good() && rename(aside.c_str(), path.c_str()) == 0) {
        return true;
    }
    unlink(aside.c_str());
    return false;
}

}  // namespace

std::string KeptFolder(const std::string& name) {
    std::string path = name.empty() ? HomePath() : HomePath() + "/" + name;
    std::error_code error;
    std::filesystem::create_directories(path, error);
    return path;
}

nlohmann::json ReadKept(const std::string& name) {
    const std::string path = PathOf(name);
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return nlohmann::json::object();
    }
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    nlohmann::json document = nlohmann::json::parse(text, nullptr, false);
    if (!document.is_object()) {
        fprintf(stderr, "[simulated recorder] %s cannot be read and is left aside: remove it\n", path.c_str());
        return nlohmann::json::object();
    }
    return document;
}

void Keep(const std::string& name, const nlohmann::json& document) {
    static std::mutex& one_at_a_time = *new std::mutex;
    std::lock_guard<std::mutex> hold(one_at_a_time);
    KeptFolder("");
    const std::string path = PathOf(name);
    if (!WriteWhole(path, document.dump(4, ' ', false, nlohmann::json::error_handler_t::replace) + "\n")) {
        fprintf(stderr, "[simulated recorder] cannot write %s: %s\n", path.c_str(), strerror(errno));
    }
}

bool OnRestore(KeptPart part, std::function<void()> forget) {
    Owners& owners = TheOwners();
    std::lock_guard<std::mutex> hold(owners.lock);
    owners.list.push_back({part, std::move(forget)});
    return true;
}

void Restore(unsigned parts) {
    std::vector<Owner> list;
    {
        Owners& owners = TheOwners();
        std::lock_guard<std::mutex> hold(owners.lock);
        list = owners.list;
    }
    for (const Owner& owner : list) {
        if ((owner.part & parts) != 0) {
            owner.forget();
        }
    }
}

}  // namespace simulator
