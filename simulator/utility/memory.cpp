#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <optional>
#include <unordered_map>

#include "core/faults.h"
#include "core/watch.h"
#include "utility/caller.h"
#include "vexo_utility.h"

namespace {

constexpr unsigned char FRESH = 0xCD;                     ///< fills new memory: a guest must not count on zeros
constexpr unsigned char FREED = 0xDD;                     ///< fills memory that was given back
constexpr unsigned long long MOST_BYTES = 256ULL << 20U;  ///< one piece; a board has no more

/** Sizes of the pieces that are out. The pieces are plain malloc's, so that memory checkers see overruns. */
struct Pieces {
    std::mutex lock;
    std::unordered_map<void*, size_t> sizes;
};

Pieces& ThePieces() {
    static Pieces& pieces = *new Pieces;
    return pieces;
}

std::string Label(vexo_user_id user, unsigned purpose, size_t bytes) {
    char text[96];
    snprintf(text, sizeof text, "user %u, purpose 0x%x, %zu bytes", static_cast<unsigned>(user), purpose, bytes);
    return text;
}

/** Takes a piece out of the table; nothing when it is not there. */
std::optional<size_t> Forget(void* memory) {
    Pieces& pieces = ThePieces();
    std::lock_guard<std::mutex> hold(pieces.lock);
    const auto found = pieces.sizes.find(memory);
    if (found == pieces.sizes.end()) {
        return std::nullopt;
    }
    const size_t bytes = found->second;
    pieces.sizes.erase(found);
    return bytes;
}

/** Overwrites memory that is about to be freed; the compiler must not take that for idle work. */
void Spoil(void* memory, size_t bytes) {
    memset(memory, FREED, bytes);
    asm volatile("" : : "r"(memory) : "memory");
}

}  // namespace

void* vexo_utility_malloc(vexo_user_id user, unsigned int purpose, unsigned int size, unsigned int count) {
    const unsigned long long bytes = static_cast<unsigned long long>(size) * count;
    if (simulator::ShallFail("vexo_utility_malloc")) {
        return nullptr;
    }
    if (bytes > MOST_BYTES) {
        simulator::Complain("memory of " + std::to_string(bytes) + " bytes asked for: " + Label(user, purpose, bytes));
        return nullptr;
    }
    // A piece of no size is a piece all the same, with an address of its own.
    void* memory = malloc(std::max(bytes, 1ULL));
    if (memory == nullptr) {
        return nullptr;
    }
    memset(memory, FRESH, bytes);
    {
        Pieces& pieces = ThePieces();
        std::lock_guard<std::mutex> hold(pieces.lock);
        pieces.sizes[memory] = bytes;
    }
    simulator::Take(simulator::Goods::Memory, reinterpret_cast<unsigned long>(memory), Label(user, purpose, bytes));
    return memory;
}

void vexo_utility_free(const char* file, const char* function, void* memory) {
    if (memory == nullptr) {
        return;
    }
    const std::string by = simulator::Place(file, function);
    const std::optional<size_t> bytes = Forget(memory);
    if (!simulator::GiveBack(simulator::Goods::Memory, reinterpret_cast<unsigned long>(memory), by) || !bytes) {
        return;
    }
    Spoil(memory, *bytes);
    free(memory);
}
