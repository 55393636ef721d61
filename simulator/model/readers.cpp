// The platform's operations that make and delete readers, and the account of them.
#include "readers.h"

#include <map>

#include "core/faults.h"
#include "core/watch.h"

namespace simulator {
namespace {

struct Readers {
    std::mutex mutex;
    // guarded by mutex
    std::map<const vexo_avss_file_reader*, std::shared_ptr<ChannelReader>> channel;
    std::map<const vexo_advance_avss_file_reader*, std::shared_ptr<AdvanceReader>> advance;
};

Readers& TheReaders() {
    static Readers& readers = *new Readers;
    return readers;
}

std::string LabelOf(const char* kind, const char* name, vexo_user_id user) {
    return std::string(kind) + (name != nullptr ? name : "without a name") + ", user " + std::to_string(user);
}

/** Takes an object out of the account; null, with a complaint, when it is not there. */
template <class Map>
typename Map::mapped_type TakeOut(Map* out, typename Map::key_type key, const char* function) {
    typename Map::mapped_type gone;
    {
        std::lock_guard<std::mutex> lock(TheReaders().mutex);
        const auto found = out->find(key);
        if (found != out->end()) {
            gone = std::move(found->second);
            out->erase(found);
        }
    }
    GiveBack(Goods::Reader, reinterpret_cast<unsigned long>(key),
             function != nullptr ? function : "an unnamed function");
    return gone;
}

template <class Map, class Reader>
typename Map::key_type PutIn(Map* out, std::shared_ptr<Reader> reader, const std::string& label) {
    typename Map::key_type key = reader.get();
    Take(Goods::Reader, reinterpret_cast<unsigned long>(key), label);
    std::lock_guard<std::mutex> lock(TheReaders().mutex);
    (*out)[key] = std::move(reader);
    return key;
}

/** All advance readers there are. */
std::vector<std::shared_ptr<AdvanceReader>> AdvanceReaders() {
    std::lock_guard<std::mutex> lock(TheReaders().mutex);
    std::vector<std::shared_ptr<AdvanceReader>> readers;
    for (const auto& [key, reader] : TheReaders().advance) {
        readers.push_back(reader);
    }
    return readers;
}

}  // namespace

std::shared_ptr<ChannelReader> FindReader(const vexo_avss_file_reader* reader) {
    std::lock_guard<std::mutex> lock(TheReaders().mutex);
    const auto found = TheReaders().channel.find(reader);
    return found != TheReaders().channel.end() ? found->second : nullptr;
}

}  // namespace simulator

vexo_avss_file_reader* vexo_model_new_avss_reader(vexo_user_id user, const char* name) {
    if (simulator::ShallFail(__func__)) {
        return nullptr;
    }
    auto reader = std::make_shared<simulator::ChannelReader>();
    vexo_avss_file_reader* out = reader.get();
    simulator::PutIn(&simulator::TheReaders().channel, std::move(reader), simulator::LabelOf("", name, user));
    return out;
}

void vexo_model_delete_avss_reader(vexo_avss_file_reader* reader, const char* /*file*/, const char* function) {
    if (reader == nullptr) {
        return;
    }
    const auto gone = simulator::TakeOut(&simulator::TheReaders().channel, reader, function);
    if (gone == nullptr) {
        return;
    }
    for (const auto& advance : simulator::AdvanceReaders()) {
        advance->Shared().Remove(gone.get());
    }
}

vexo_advance_avss_file_reader* vexo_model_new_advance_avss_reader(vexo_user_id user, const char* name) {
    if (simulator::ShallFail(__func__)) {
        return nullptr;
    }
    auto reader = std::make_shared<simulator::AdvanceReader>();
    vexo_advance_avss_file_reader* out = reader.get();
    simulator::PutIn(&simulator::TheReaders().advance, std::move(reader),
                     simulator::LabelOf("advance reader ", name, user));
    return out;
}

void vexo_model_delete_advance_avss_reader(vexo_advance_avss_file_reader* reader, const char* /*file*/,
                                           const char* function) {
    if (reader != nullptr) {
        simulator::TakeOut(&simulator::TheReaders().advance, reader, function);
    }
}
