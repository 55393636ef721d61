// The platform's search for recordings: vexo_model_inquiry_rec_by_time and what takes its result back.
#include <ctime>

#include "core/faults.h"
#include "history.h"
#include "inquiry.h"

namespace simulator {
namespace {

constexpr int64_t SECOND = 1000000;  // microseconds
constexpr unsigned ALL_OF = 1;

// Microseconds since 1970 of a local time; -1 when the calendar does not have it. An hour that a clock change leaves
// out counts as the one after it.
int64_t MomentOf(const vexo_time_struct& time) {
    tm broken = {};
    broken.tm_year = time.year - 1900;
    broken.tm_mon = time.month - 1;
    broken.tm_mday = time.day;
    broken.tm_hour = time.hour;
    broken.tm_min = time.minute;
    broken.tm_sec = time.second;
    broken.tm_isdst = -1;
    const time_t seconds = mktime(&broken);
    const bool day = broken.tm_mon + 1 == time.month && broken.tm_mday == time.day;
    const bool clock = time.hour < 24 && time.minute < 60 && time.second < 60;
    return day && clock && seconds >= 0 ? seconds * SECOND : -1;
}

std::string LabelOf(unsigned channel, vexo_user_id user) {
    return "recordings of channel " + std::to_string(channel) + ", user " + std::to_string(user);
}

Archive* ArchiveWithHistory() {
    Archive* archive = Archive::Get();
    if (archive != nullptr) {
        EnsureHistory(archive);
    }
    return archive;
}

}  // namespace
}  // namespace simulator

int vexo_model_inquiry_rec_by_time(unsigned int /*id*/, vexo_user_id user, unsigned int channel,
                                   const vexo_time_struct* start, const vexo_time_struct* stop, unsigned int type_mask,
                                   unsigned int inquiry_type, vexo_rec_file_inquiry_result** result) {
    if (simulator::ShallFail(__func__) || start == nullptr || stop == nullptr || result == nullptr ||
        channel >= simulator::TheScenario().cameras.size() || inquiry_type > simulator::ALL_OF) {
        return -1;
    }
    const simulator::Search search = {channel + 1, simulator::MomentOf(*start), simulator::MomentOf(*stop), type_mask,
                                      inquiry_type == simulator::ALL_OF};
    simulator::Archive* archive = simulator::ArchiveWithHistory();
    if (search.from < 0 || search.to < search.from || archive == nullptr) {
        return -1;
    }
    *result = simulator::HandOut(channel, archive->Find(search), simulator::LabelOf(channel + 1, user));
    return 0;
}

void vexo_model_free_inquiry_rec_result(vexo_rec_file_inquiry_result* result) {
    if (result != nullptr) {
        simulator::TakeBack(result);
    }
}
