// The recorder's event table: one reading of it, and what becomes of an entry in an alarm record and in a status entry.
// Who asks, who is told and when does not belong here.
#ifndef HOSTMGR_EVENT_H
#define HOSTMGR_EVENT_H

#include "hostmgr_common.h"

/** One reading of the event table: first how many entries there are, then the entries. The memory goes with it. */
class HostMgrEventTable {
public:
    /** file has static storage; site names who reads, for the accounting and for a failed assertion. */
    HostMgrEventTable(const char* file, const HostMgrSite& site) : m_file(file), m_site(site) {}
    ~HostMgrEventTable();
    HostMgrEventTable(const HostMgrEventTable&) = delete;
    HostMgrEventTable& operator=(const HostMgrEventTable&) = delete;

    /** Asks how many entries there are; false on failure, and when there are none. */
    bool Count();
    /** Once, after Count: fetches the entries; false on failure, and when there are more than there was room made for.
     *  No memory ends the process. */
    bool Read();

    const vexo_event_detail_info* begin() const { return m_info; }
    const vexo_event_detail_info* end() const { return m_info + m_count; }
    /** Entries: after Count as announced, after Read as fetched. */
    uint32_t Size() const { return m_count; }

private:
    const char* const m_file;
    const HostMgrSite m_site;
    vexo_event_detail_info* m_info = NULL;
    unsigned int m_count = 0;
};

/** Makes an event an alarm. What the event does not say is left in the record as the event before it had it. */
void HostMgrEventToAlarm(const vexo_event_detail_info& event, const vexo_dev_capability& capability,
                         _tagVexoHostMgrAlarmInfo* alarm);

/** Makes an event an entry of the status list, which is zero so far; false when the list ends before it. */
bool HostMgrEventToStatus(const vexo_event_detail_info& event, _tagVexoHostMgrALarmStatusInfo* status);

#endif
