#include "core/watch.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <mutex>
#include <set>
#include <utility>

#include "control.h"
#include "core/watch_book.h"

namespace simulator {
namespace {

constexpr size_t MAX_COMPLAINTS = 1000;

using Key = std::pair<Goods, unsigned long>;

struct Entry {
    std::string label;
    unsigned count = 0;
    bool done = false;
};

/** The book itself. Never destroyed: threads of the guest run on while the process ends. */
struct Book {
    std::mutex lock;
    std::map<Key, Entry> entries;
    std::set<std::pair<Goods, std::string>> returned_kinds;  ///< locks and threads of which one has come back
    std::vector<std::string> complaints;
    unsigned long complaints_left_out = 0;
};

Book& TheBook() {
    static Book& book = *new Book;
    return book;
}

const char* NameOf(Goods goods) {
    static const char* const names[] = {"memory",   "lock",  "thread", "frame",  "reader",
                                        "document", "login", "talk",   "inquiry"};
    return names[static_cast<int>(goods)];
}

bool MayBeResident(Goods goods) {
    return goods == Goods::Lock || goods == Goods::Thread;
}

/** The rule of the report: a lock or thread is in use unless it is done, or one of the same label has come back. */
bool StillInUse(const Book& book, Goods goods, const Entry& entry) {
    return MayBeResident(goods) && !entry.done && book.returned_kinds.count({goods, entry.label}) == 0;
}

void AddComplaint(Book& book, std::string text) {
    if (book.complaints.size() < MAX_COMPLAINTS) {
        book.complaints.push_back(std::move(text));
    } else {
        ++book.complaints_left_out;
    }
}

}  // namespace

void Take(Goods goods, unsigned long key, const std::string& label) {
    Book& book = TheBook();
    std::lock_guard<std::mutex> hold(book.lock);
    Entry& entry = book.entries[{goods, key}];
    entry.label = label;
    ++entry.count;
}

bool GiveBack(Goods goods, unsigned long key, const std::string& by) {
    Book& book = TheBook();
    std::lock_guard<std::mutex> hold(book.lock);
    const auto found = book.entries.find({goods, key});
    if (found == book.entries.end()) {
        AddComplaint(book,
                     std::string(NameOf(goods)) + " given back that was not taken, or given back twice: by " + by);
        return false;
    }
    if (MayBeResident(goods)) {
        book.returned_kinds.insert({goods, found->second.label});
    }
    if (--found->second.count == 0) {
        book.entries.erase(found);
    }
    return true;
}

void Complain(const std::string& text) {
    Book& book = TheBook();
    std::lock_guard<std::mutex> hold(book.lock);
    AddComplaint(book, text);
}

void MarkDone(Goods goods, unsigned long key) {
    Book& book = TheBook();
    std::lock_guard<std::mutex> hold(book.lock);
    const auto found = book.entries.find({goods, key});
    if (found != book.entries.end()) {
        found->second.done = true;
    }
}

std::vector<Holding> Holdings() {
    std::vector<Holding> holdings;
    {
        Book& book = TheBook();
        std::lock_guard<std::mutex> hold(book.lock);
        for (const auto& [key, entry] : book.entries) {
            holdings.push_back(
                {std::string(NameOf(key.first)) + ": " + entry.label, entry.count, StillInUse(book, key.first, entry)});
        }
    }
    std::sort(holdings.begin(), holdings.end(),
              [](const Holding& left, const Holding& right) { return left.text < right.text; });
    return holdings;
}

std::vector<std::string> AllComplaints() {
    Book& book = TheBook();
    std::lock_guard<std::mutex> hold(book.lock);
    std::vector<std::string> complaints = book.complaints;
    if (book.complaints_left_out > 0) {
        complaints.push_back("and " + std::to_string(book.complaints_left_out) + " more");
    }
    return complaints;
}

namespace control {

std::vector<std::string> Outstanding() {
    std::vector<std::string> lines;
    for (const Holding& holding : Holdings()) {
        std::fill_n(std::back_inserter(lines), holding.count, holding.text);
    }
    return lines;
}

std::vector<std::string> Complaints() {
    return AllComplaints();
}

}  // namespace control
}  // namespace simulator
