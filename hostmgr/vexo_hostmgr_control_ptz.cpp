// PTZ: what each command of the agent's becomes for the model library, as one table.
#include "vexo_hostmgr_control.h"
#include "vexo_model.h"

namespace {

/** The model library's code for "stop moving". */
constexpr uint32_t PTZ_STOP = 0x13149527;

/** What is done with a command. */
enum Action : uint8_t {
    REFUSE,
    REFUSE_FILL,  // with a warning of its own
    SEND,
    MOVE,  // send; p1 = 1 sends PTZ_STOP, all parameters zero, instead
    KEEP,  // nothing is sent
};

/** Where a parameter's value comes from. */
enum Source : uint8_t {
    ZERO,
    P1,
    P2,
    P3,
    P1_FROM_0,  // p1 counts from 1, the model library from 0; 0 stays 0
    PARAM_A,
    PARAM_B,
};

struct PtzRow {
    uint32_t dwPtzCmd;
    Action action;
    uint32_t code;
    uint32_t kind;
    Source value[4];
    std::atomic<uint32_t> HostMgrPtzValues::*p3_kept = NULL;  // where p3 is remembered; p1 then is, too, as the group
};

constexpr PtzRow PTZ_ROWS[] = {
    {HOSTMGR_PTZ_CMD_2, SEND, 0x600, 0, {P2}},
    {HOSTMGR_PTZ_CMD_3, SEND, 0x500, 0, {P2}},
    {HOSTMGR_PTZ_CMD_4, REFUSE, 0, 0, {}},
    {HOSTMGR_PTZ_CMD_5, REFUSE, 0, 0, {}},
    {HOSTMGR_PTZ_CMD_6, REFUSE, 0, 0, {}},
    {HOSTMGR_PTZ_CMD_7, REFUSE, 0, 0, {}},
    {HOSTMGR_PTZ_PRESET_SET, SEND, 0x700, 1, {P1}},
    {HOSTMGR_PTZ_PRESET_CLEAR, SEND, 0x701, 1, {P1}},
    {HOSTMGR_PTZ_CMD_10, REFUSE, 0, 0, {}},
    {HOSTMGR_PTZ_ZOOM_IN, SEND, 0x200, 0, {P2}},
    {HOSTMGR_PTZ_ZOOM_OUT, SEND, 0x201, 0, {P2}},
    {HOSTMGR_PTZ_FOCUS_NEAR, SEND, 0x300, 0, {P2}},
    {HOSTMGR_PTZ_FOCUS_FAR, SEND, 0x301, 0, {P2}},
    {HOSTMGR_PTZ_IRIS_OPEN, SEND, 0x400, 0, {P2}},
    {HOSTMGR_PTZ_IRIS_CLOSE, SEND, 0x401, 0, {P2}},
    {HOSTMGR_PTZ_CMD_17, REFUSE, 0, 0, {}},
    {HOSTMGR_PTZ_CMD_18, REFUSE, 0, 0, {}},
    {HOSTMGR_PTZ_CMD_19, REFUSE, 0, 0, {}},
    {HOSTMGR_PTZ_CMD_20, REFUSE, 0, 0, {}},
    {HOSTMGR_PTZ_UP, MOVE, 0x100, 0, {P2}},
    {HOSTMGR_PTZ_DOWN, MOVE, 0x101, 0, {P2}},
    {HOSTMGR_PTZ_LEFT, MOVE, 0x102, 0, {P2}},
    {HOSTMGR_PTZ_RIGHT, MOVE, 0x103, 0, {P2}},
    {HOSTMGR_PTZ_UP_LEFT, MOVE, 0x104, 0, {P2}},
    {HOSTMGR_PTZ_UP_RIGHT, MOVE, 0x105, 0, {P2}},
    {HOSTMGR_PTZ_DOWN_LEFT, MOVE, 0x106, 0, {P2}},
    {HOSTMGR_PTZ_DOWN_RIGHT, MOVE, 0x107, 0, {P2}},
    {HOSTMGR_PTZ_CMD_29, SEND, 0x809, 0, {P2}},
    {HOSTMGR_PTZ_TOUR_PARAM_A, KEEP, 0, 0, {}, &HostMgrPtzValues::dwPtzParamA},
    {HOSTMGR_PTZ_TOUR_PARAM_B, KEEP, 0, 0, {}, &HostMgrPtzValues::dwPtzParamB},
    {HOSTMGR_PTZ_TOUR_ADD_POINT, SEND, 0x802, 3, {P1, P3, PARAM_A, PARAM_B}, &HostMgrPtzValues::dwPtzPoint},
    {HOSTMGR_PTZ_TOUR_DELETE_POINT, SEND, 0x803, 3, {P1, ZERO, P2}},
    {HOSTMGR_PTZ_CMD_34, SEND, 0x807, 2, {P1_FROM_0}},
    {HOSTMGR_PTZ_CMD_35, SEND, 0x808, 2, {P1_FROM_0}},
    {HOSTMGR_PTZ_CMD_36, SEND, 0x805, 2, {P1_FROM_0}},
    {HOSTMGR_PTZ_TOUR_START, SEND, 0x800, 3, {P1}},
    {HOSTMGR_PTZ_TOUR_STOP, SEND, 0x801, 3, {P1}},
    {HOSTMGR_PTZ_PRESET_GOTO, SEND, 0x702, 1, {P1}},
    {HOSTMGR_PTZ_TOUR_SET_FILL, REFUSE_FILL, 0, 0, {}},
    {HOSTMGR_PTZ_CMD_41, SEND, 1, 0, {}},
    {HOSTMGR_PTZ_CMD_42, SEND, 0x80A, 4, {P1, P2, P3}},
};

const PtzRow* FindRow(uint32_t dwPtzCmd) {
    for (const PtzRow& row : PTZ_ROWS) {
        if (row.dwPtzCmd == dwPtzCmd)
            return row.action != REFUSE ? &row : NULL;
    }
    return NULL;
}

void KeepValues(const PtzRow& row, const _tagVexoHostMgrPtzCmd& command, HostMgrPtzValues* kept) {
    if (row.p3_kept == NULL)
        return;
    kept->dwPtzGroup.store(command.dwParam1, std::memory_order_relaxed);
    (kept->*row.p3_kept).store(command.dwParam3, std::memory_order_relaxed);
}

uint32_t ValueOf(Source source, const _tagVexoHostMgrPtzCmd& command, const HostMgrPtzValues& kept) {
    switch (source) {
        case ZERO:
            return 0;
        case P1:
            return command.dwParam1;
        case P2:
            return command.dwParam2;
        case P3:
            return command.dwParam3;
        case P1_FROM_0:
            return command.dwParam1 != 0 ? command.dwParam1 - 1 : 0;
        case PARAM_A:
            return kept.dwPtzParamA.load(std::memory_order_relaxed);
        case PARAM_B:
            return kept.dwPtzParamB.load(std::memory_order_relaxed);
    }
    return 0;
}

/** What the model library is sent. */
struct PtzOrder {
    uint32_t code;
    vexo_ipc_ptz_ctrl_para para;
};

PtzOrder Translate(const PtzRow& row, const _tagVexoHostMgrPtzCmd& command, const HostMgrPtzValues& kept) {
    if (row.action == MOVE && command.dwParam1 == 1)
        return {PTZ_STOP, {}};
    PtzOrder order = {row.code, {row.kind, {}}};
    for (size_t index = 0; index < sizeof(row.value) / sizeof(row.value[0]); ++index)
        order.para.value[index] = ValueOf(row.value[index], command, kept);
    return order;
}

}  // namespace

int vexo_hostmgr_control::HostMgrControlPtz(int hLogin, int lStartChan, int lChanNum, void* pInBuf,
                                            unsigned int dwInLength) {
    if (pInBuf == NULL || dwInLength == 0) {
        HOSTMGR_PRINTF(ERROR, "Param invalid: pInBuf %p, dwInLength %d, !!\n", pInBuf, dwInLength);
        return -1;
    }
    const auto command = HostMgrReadRecord<_tagVexoHostMgrPtzCmd>(pInBuf, dwInLength);
    const PtzRow* row = FindRow(command.dwPtzCmd);
    if (row == NULL) {
        HOSTMGR_PRINTF(ERROR, "PTZCmd 0x%x not supported!!\n", command.dwPtzCmd);
        return -1;
    }
    if (row->action == REFUSE_FILL) {
        HOSTMGR_PUTS(WARNING, "VEXO_PTZ_CRUSIE_SET_FILL not supported!!");
        return -1;
    }
    KeepValues(*row, command, &m_ptz);
    if (row->action == KEEP)
        return 0;
    const PtzOrder order = Translate(*row, command, m_ptz);
    HostMgrForEachChannel(lStartChan, lChanNum, [hLogin, &order](unsigned int channel) {
        vexo_model_send_ptz_cmd(static_cast<unsigned int>(hLogin), channel, order.code, &order.para);
    });
    return 0;
}
