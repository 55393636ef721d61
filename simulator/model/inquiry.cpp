#include "inquiry.h"

#include <map>
#include <memory>
#include <mutex>

#include "core/watch.h"

namespace simulator {
namespace {

constexpr int64_t SECOND = 1000000;  // microseconds

/** A list as the guest sees it and as the recorder keeps it. */
struct Inquiry {
    vexo_rec_file_inquiry_result list = {};
    std::vector<vexo_rec_file> entries;
    std::vector<RecordedFile> files;
};

struct Inquiries {
    std::mutex mutex;
    std::map<const vexo_rec_file_inquiry_result*, std::unique_ptr<Inquiry>> out;  // guarded by mutex
};

Inquiries& TheInquiries() {
    static Inquiries& inquiries = *new Inquiries;
    return inquiries;
}

// Whole seconds that the file lies within.
vexo_rec_file EntryOf(const RecordedFile& file) {
    vexo_rec_file entry = {};
    entry.start = static_cast<unsigned>(file.start / SECOND);
    entry.stop = static_cast<unsigned>((file.stop + SECOND - 1) / SECOND);
    entry.type = file.type;
    entry.info_1 = static_cast<unsigned>(file.number);
    entry.info_2 = file.disk;
    return entry;
}

unsigned long KeyOf(const vexo_rec_file_inquiry_result* list) {
    return reinterpret_cast<unsigned long>(list);
}

}  // namespace

vexo_rec_file_inquiry_result* HandOut(unsigned channel, std::vector<RecordedFile> files, const std::string& label) {
    auto inquiry = std::make_unique<Inquiry>();
    inquiry->files = std::move(files);
    inquiry->entries.reserve(inquiry->files.size());
    for (const RecordedFile& file : inquiry->files) {
        inquiry->entries.push_back(EntryOf(file));
    }
    for (size_t i = 1; i < inquiry->entries.size(); ++i) {
        inquiry->entries[i - 1].next = &inquiry->entries[i];
    }
    inquiry->list.channel = channel;
    inquiry->list.first = inquiry->entries.empty() ? nullptr : inquiry->entries.data();
    vexo_rec_file_inquiry_result* list = &inquiry->list;
    Take(Goods::Inquiry, KeyOf(list), label);
    Inquiries& inquiries = TheInquiries();
    std::lock_guard<std::mutex> lock(inquiries.mutex);
    inquiries.out[list] = std::move(inquiry);
    return list;
}

bool TakeBack(vexo_rec_file_inquiry_result* list) {
    Inquiries& inquiries = TheInquiries();
    std::unique_ptr<Inquiry> gone;
    {
        std::lock_guard<std::mutex> lock(inquiries.mutex);
        const auto found = inquiries.out.find(list);
        if (found != inquiries.out.end()) {
            gone = std::move(found->second);
            inquiries.out.erase(found);
        }
    }
    return GiveBack(Goods::Inquiry, KeyOf(list), "vexo_model_free_inquiry_rec_result");
}

std::optional<std::vector<RecordedFile>> FilesOf(const vexo_rec_file_inquiry_result* list) {
    Inquiries& inquiries = TheInquiries();
    std::lock_guard<std::mutex> lock(inquiries.mutex);
    const auto found = inquiries.out.find(list);
    return found != inquiries.out.end() ? std::optional(found->second->files) : std::nullopt;
}

}  // namespace simulator
