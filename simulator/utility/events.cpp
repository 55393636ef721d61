#include "core/faults.h"
#include "vexo_utility.h"

// The event table is filled by a later storey of the recorder; until then nothing is ever the case.
int vexo_utility_get_event_info(unsigned int, vexo_event_detail_info*, unsigned int, unsigned int* count) {
    if (count == nullptr || simulator::ShallFail("vexo_utility_get_event_info")) {
        return -1;
    }
    *count = 0;
    return 0;
}
