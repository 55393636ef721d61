// Every exported function, and the frames that they run in. What a function does stands in the resource manager or in a
// login's module object; here is only the way there.
#include "hostmgr_dev.h"

#include "hostmgr_common.h"
#include "vexo_cfgm.h"
#include "vexo_hostmgr_resource.h"
#include "vexo_model.h"

// ---- frames --------------------------------------------------------------------------------------------------------
//
// A frame logs under the name of the exported function that runs in it, so each is told where it stands (HOSTMGR_HERE).

static std::atomic<int> s_inited{0};  // 0, then 1 for the life of the process
static pthread_mutex_t s_init_mutex = PTHREAD_MUTEX_INITIALIZER;

static bool IsInited(const HostMgrSite& site) {
    if (s_inited.load(std::memory_order_acquire) != 0)
        return true;
    HostMgrPuts(HOSTMGR_LEVEL_ERROR, site, "not init");
    return false;
}

/** Global frame: a member of the resource manager. */
template <typename... Parameters, typename... Arguments>
static int GlobalFrame(const HostMgrSite& site, int (vexo_hostmgr_res_manage::*operation)(Parameters...),
                       Arguments... arguments) {
    return IsInited(site) ? (get_res_manage()->*operation)(arguments...) : -1;
}

static int NotLoggedIn(const HostMgrSite& site, int hLogin) {
    HostMgrPrintf(HOSTMGR_LEVEL_ERROR, site, "hLogin:%d not logged in!!\n", hLogin);
    return -1;
}

static const HostMgrUserInfo* FindLogin(const HostMgrSite& site, int hLogin) {
    HostMgrUserInfo* user = NULL;
    if (get_res_manage()->HostMgrGetUserInfo(hLogin, &user) == 0 && user != NULL)
        return user;
    NotLoggedIn(site, hLogin);
    return NULL;
}

/** The module object of a login, once initialisation is known to be done; logged out meanwhile counts as not logged in.
 */
template <typename Module>
static HostMgrUse<Module> FindModule(const HostMgrSite& site, int hLogin) {
    const HostMgrUserInfo* user = FindLogin(site, hLogin);
    if (user == NULL)
        return HostMgrUse<Module>(NULL);
    HostMgrUse<Module> module = get_res_manage()->UseModule<Module>(user, static_cast<uint32_t>(hLogin));
    if (module.Get() == NULL)
        NotLoggedIn(site, hLogin);
    return module;
}

/** Login frame: an operation of the module object that the login holds of that class. */
template <typename Module, typename... Parameters, typename... Arguments>
static int LoginFrame(const HostMgrSite& site, int hLogin, int (Module::*operation)(Parameters...),
                      Arguments... arguments) {
    if (!IsInited(site))
        return -1;
    const HostMgrUse<Module> module = FindModule<Module>(site, hLogin);
    return module.Get() != NULL ? (module.Get()->*operation)(arguments...) : -1;
}

/** Derived-handle frame: the login stands in the handle's low 16 bits, the operation gets the whole handle first. */
template <typename Module, typename... Parameters, typename... Arguments>
static int HandleFrame(const HostMgrSite& site, int handle, int (Module::*operation)(Parameters...),
                       Arguments... arguments) {
    return LoginFrame(site, HostMgrLoginOfHandle(handle), operation, handle, arguments...);
}

/** Derived-handle frame of a stream buffer: a handle of 0 or less is refused before the lookup. */
template <typename... Parameters, typename... Arguments>
static int StreamFrame(const HostMgrSite& site, int hID, int (vexo_hostmgr_lv::*operation)(Parameters...),
                       Arguments... arguments) {
    if (!IsInited(site))
        return -1;
    if (hID <= 0) {
        HostMgrPrintf(HOSTMGR_LEVEL_ERROR, site, "hID 0x%x\n", static_cast<unsigned int>(hID));
        return -1;
    }
    return HandleFrame(site, hID, operation, arguments...);
}

/** Frame of a placeholder that only looks the login up. */
static int LookupFrame(const HostMgrSite& site, int hLogin) {
    if (IsInited(site))
        FindLogin(site, hLogin);
    return -1;
}

/** Frames of the placeholders that say so, without and with the lookup. */
static int NotSupported(const HostMgrSite& site) {
    HostMgrPuts(HOSTMGR_LEVEL_ERROR, site, "Not support");
    IsInited(site);
    return -1;
}

static int NotSupportedForLogin(const HostMgrSite& site, int hLogin) {
    HostMgrPuts(HOSTMGR_LEVEL_ERROR, site, "Not support");
    return LookupFrame(site, hLogin);
}

// ---- control dispatch ----------------------------------------------------------------------------------------------

namespace {

/** The parameters of Control, in its order. */
struct ControlCall {
    HostMgrSite site;
    int hLogin;
    int lStartChan;
    int lChanNum;
    void* lpCondBuffer;
    unsigned int dwCondBufferSize;
    void* lpInBuffer;
    unsigned int dwInBufferSize;
    void* lpOutBuffer;
    unsigned int dwOutBufferSize;
};

/** Runs an operation of a login's module object. What it answers is not passed on: agents see it on the console only.
 */
template <typename Module, typename... Parameters, typename... Arguments>
int RunOn(const ControlCall& call, int (Module::*operation)(Parameters...), Arguments... arguments) {
    const HostMgrUse<Module> module = FindModule<Module>(call.site, call.hLogin);
    if (module.Get() == NULL)
        return -1;
    (module.Get()->*operation)(arguments...);
    return 0;
}

int RunPtz(const ControlCall& call) {
    return RunOn(call, &vexo_hostmgr_control::HostMgrControlPtz, call.hLogin, call.lStartChan, call.lChanNum,
                 call.lpInBuffer, call.dwInBufferSize);
}

int RunReboot(const ControlCall& call) {
    return RunOn(call, &vexo_hostmgr_control::HostMgrControlReboot, call.hLogin);
}

int RunPowerOff(const ControlCall& call) {
    return RunOn(call, &vexo_hostmgr_control::HostMgrControlShutDown, call.hLogin);
}

int RunAlarmEnable(const ControlCall& call) {
    return RunOn(call, &vexo_hostmgr_alarm::HostMgrEnableAlarm, call.hLogin, call.lpCondBuffer, call.dwCondBufferSize);
}

int RunPlayback(const ControlCall& call) {
    return RunOn(call, &vexo_hostmgr_playback::HostMgrHistoryStreamPlayControl, call.hLogin, call.lStartChan,
                 call.lChanNum, call.lpCondBuffer, call.dwCondBufferSize, call.lpInBuffer, call.dwInBufferSize,
                 call.lpOutBuffer, call.dwOutBufferSize);
}

int RunRecord(const ControlCall& call) {
    return RunOn(call, &vexo_hostmgr_control::HostMgrRecordConfig, call.hLogin, call.lStartChan, call.lChanNum,
                 call.lpInBuffer, call.dwInBufferSize);
}

int RunRestore(const ControlCall& call) {
    return RunOn(call, &vexo_hostmgr_control::HostMgrRestoreConfig, call.hLogin);
}

struct ControlCommand {
    unsigned int dwCommand;
    int (*run)(const ControlCall& call);
};

constexpr ControlCommand CONTROL_COMMANDS[] = {
    {HOSTMGR_CONTROL_PTZ, RunPtz},
    {HOSTMGR_CONTROL_REBOOT, RunReboot},
    {HOSTMGR_CONTROL_POWER_OFF, RunPowerOff},
    {HOSTMGR_CONTROL_ALARM_ENABLE, RunAlarmEnable},
    {HOSTMGR_CONTROL_PLAYBACK, RunPlayback},
    {HOSTMGR_CONTROL_RECORD, RunRecord},
    {HOSTMGR_CONTROL_RESTORE, RunRestore},
};

}  // namespace

static int ControlFrame(const ControlCall& call, unsigned int dwCommand) {
    if (!IsInited(call.site))
        return -1;
    for (const ControlCommand& command : CONTROL_COMMANDS) {
        if (command.dwCommand == dwCommand)
            return command.run(call);
    }
    return LookupFrame(call.site, call.hLogin);
}

namespace vexo_soft {

// ---- login and library state ---------------------------------------------------------------------------------------

void vexo_HostMgr_Dev_init() {
    if (s_inited.load(std::memory_order_acquire) != 0)
        return;
    pthread_mutex_lock(&s_init_mutex);
    if (s_inited.load(std::memory_order_relaxed) == 0) {
        // The resource manager makes platform locks and a platform thread: both libraries must be up before it.
        vexo_utility_init(VEXO_UTILITY_OPS_HOST);
        vexo_cfgm_init();
        get_res_manage()->construct_res();
        s_inited.store(1, std::memory_order_release);
    }
    pthread_mutex_unlock(&s_init_mutex);
}

int vexo_HostMgr_Dev_Login(char* sUserName, char* sPassword, char* sIp) {
    return GlobalFrame(HOSTMGR_HERE, &vexo_hostmgr_res_manage::HostMgr_Dev_LoginV2, sUserName, sPassword, sIp, 0, -1);
}

int vexo_HostMgr_Dev_LoginV2(char* sUserName, char* sPassword, char* sIp, unsigned int dwFlag, int lSpare) {
    return GlobalFrame(HOSTMGR_HERE, &vexo_hostmgr_res_manage::HostMgr_Dev_LoginV2, sUserName, sPassword, sIp, dwFlag,
                       lSpare);
}

int vexo_HostMgr_Dev_Logout(int hLogin) {
    return GlobalFrame(HOSTMGR_HERE, &vexo_hostmgr_res_manage::HostMgr_Dev_Logout, hLogin);
}

void vexo_HostMgr_Dev_SetHook_InsertLog(int /*lSpare*/, vexo_hostmgr_log_hook pfnHook, void* pUser) {
    if (IsInited(HOSTMGR_HERE))
        vexo_model_set_log_hook(pfnHook, pUser);
}

// ---- configuration and control -------------------------------------------------------------------------------------

int vexo_HostMgr_Dev_GetConfig(int hLogin, unsigned int dwCommand, int lStartChan, int lChanNum, void* lpCondBuffer,
                               unsigned int dwCondBufferSize, void* lpOutBuffer, unsigned int dwOutBufferSize,
                               unsigned int* lpBytesReturned) {
    return GlobalFrame(HOSTMGR_HERE, &vexo_hostmgr_res_manage::HostMgr_Dev_GetConfig, hLogin, dwCommand, lStartChan,
                       lChanNum, lpCondBuffer, dwCondBufferSize, lpOutBuffer, dwOutBufferSize, lpBytesReturned);
}

int vexo_HostMgr_Dev_SetConfig(int hLogin, unsigned int dwCommand, int lStartChan, int lChanNum, void* lpCondBuffer,
                               unsigned int dwCondBufferSize, void* lpInBuffer, unsigned int dwInBufferSize) {
    return GlobalFrame(HOSTMGR_HERE, &vexo_hostmgr_res_manage::HostMgr_Dev_SetConfig, hLogin, dwCommand, lStartChan,
                       lChanNum, lpCondBuffer, dwCondBufferSize, lpInBuffer, dwInBufferSize);
}

int vexo_HostMgr_Dev_GetAbility(int hLogin, unsigned int dwAbilityType, char* pInBuf, unsigned int dwInLength,
                                char* pOutBuf, unsigned int dwOutLength) {
    return GlobalFrame(HOSTMGR_HERE, &vexo_hostmgr_res_manage::HostMgr_Dev_GetAbility, hLogin, dwAbilityType, pInBuf,
                       dwInLength, pOutBuf, dwOutLength);
}

char* vexo_HostMgr_Dev_ReadCfg(char* pHostMgrName) {
    return IsInited(HOSTMGR_HERE) ? get_res_manage()->HostMgr_Dev_ReadCfg(pHostMgrName) : NULL;
}

int vexo_HostMgr_Dev_SaveCfg(char* pHostMgrName, char* pXml, unsigned int dwXmlSize) {
    return GlobalFrame(HOSTMGR_HERE, &vexo_hostmgr_res_manage::HostMgr_Dev_SaveCfg, pHostMgrName, pXml, dwXmlSize);
}

int vexo_HostMgr_Dev_Control(int hLogin, unsigned int dwCommand, int lStartChan, int lChanNum, void* lpCondBuffer,
                             unsigned int dwCondBufferSize, void* lpInBuffer, unsigned int dwInBufferSize,
                             void* lpOutBuffer, unsigned int dwOutBufferSize) {
    return ControlFrame({HOSTMGR_HERE, hLogin, lStartChan, lChanNum, lpCondBuffer, dwCondBufferSize, lpInBuffer,
                         dwInBufferSize, lpOutBuffer, dwOutBufferSize},
                        dwCommand);
}

// ---- live view -----------------------------------------------------------------------------------------------------

int vexo_HostMgr_Dev_StartRealPlay(int hLogin, int lChannel, int lStreamIdx) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_lv::HostMgr_Dev_StartRealPlay, hLogin, lChannel, lStreamIdx);
}

int vexo_HostMgr_Dev_StopRealPlay(int hLogin, int lChannel, int lStreamIdx) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_lv::HostMgr_Dev_StopRealPlay, hLogin, lChannel, lStreamIdx);
}

int vexo_HostMgr_Dev_CreateRealStreamBuffer(int hLogin, unsigned int dwChannel, unsigned int dwStreamIdx) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_lv::HostMgr_Dev_CreateRealStreamBuffer, hLogin, dwChannel,
                      dwStreamIdx);
}

int vexo_HostMgr_Dev_RealStreamBufferEnableAudio(int hID, unsigned int bEnable) {
    return StreamFrame(HOSTMGR_HERE, hID, &vexo_hostmgr_lv::HostMgr_Dev_RealStreamBufferEnableAudio, bEnable);
}

int vexo_HostMgr_Dev_ReadRealOneFrame(int hID, unsigned int* pdwChannel, unsigned int* pdwStreamIdx,
                                      unsigned char** ppBuffer, unsigned int* pdwLength, unsigned int* pdwFrameInfo,
                                      unsigned int* pdwFlags) {
    return StreamFrame(HOSTMGR_HERE, hID, &vexo_hostmgr_lv::HostMgr_Dev_ReadRealOneFrame, pdwChannel, pdwStreamIdx,
                       ppBuffer, pdwLength, pdwFrameInfo, pdwFlags);
}

int vexo_HostMgr_Dev_ReleaseRealOneFrame(int hID) {
    return StreamFrame(HOSTMGR_HERE, hID, &vexo_hostmgr_lv::HostMgr_Dev_ReleaseRealOneFrame);
}

int vexo_HostMgr_Dev_DestroyRealStreamBuffer(int hID) {
    return StreamFrame(HOSTMGR_HERE, hID, &vexo_hostmgr_lv::HostMgr_Dev_DestroyRealStreamBuffer);
}

// Start takes a login handle whole; the other three take the handle that it returned.
int vexo_HostMgr_Dev_StartZeroCodec(int hLogin, int lSpare, unsigned int dwCount, unsigned int* pdwChannels) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_lv::HostMgr_Dev_StartZeroCodec, hLogin, lSpare, dwCount,
                      pdwChannels);
}

int vexo_HostMgr_Dev_SetZeroCodecMode(int lZeroCodecHandle, int lSpare, unsigned int dwCount,
                                      unsigned int* pdwChannels) {
    return HandleFrame(HOSTMGR_HERE, lZeroCodecHandle, &vexo_hostmgr_lv::HostMgr_Dev_SetZeroCodecMode, lSpare, dwCount,
                       pdwChannels);
}

int vexo_HostMgr_Dev_ReadZeroCodecStream(int lZeroCodecHandle, unsigned int dwSpare, unsigned char** ppBuffer,
                                         unsigned int* pdwLength, unsigned int* pdwFrameInfo) {
    return HandleFrame(HOSTMGR_HERE, lZeroCodecHandle, &vexo_hostmgr_lv::HostMgr_Dev_ReadZeroCodecStream, dwSpare,
                       ppBuffer, pdwLength, pdwFrameInfo);
}

int vexo_HostMgr_Dev_StopZeroCodec(int lZeroCodecHandle) {
    return HandleFrame(HOSTMGR_HERE, lZeroCodecHandle, &vexo_hostmgr_lv::HostMgr_Dev_StopZeroCodec);
}

// ---- history playback ----------------------------------------------------------------------------------------------

int vexo_HostMgr_Dev_StartHistoryPlay(int hLogin, int lChannel, unsigned int dwMode, _tagVexoHostMgrTime* pStartTime,
                                      _tagVexoHostMgrTime* pStopTime) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_playback::HostMgr_Dev_StartHistoryPlay, hLogin, lChannel,
                      dwMode, pStartTime, pStopTime);
}

int vexo_HostMgr_Dev_StartHistoryPlayV2(int hLogin, int lChannel, unsigned int dwMode, _tagVexoHostMgrTime* pStartTime,
                                        _tagVexoHostMgrTime* pStopTime,
                                        vexo_hostmgr_stream_callback_v2 pfnStreamCallBack, void* pUser) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_playback::HostMgr_Dev_StartHistoryPlayV2, hLogin, lChannel,
                      dwMode, pStartTime, pStopTime, pfnStreamCallBack, pUser);
}

int vexo_HostMgr_Dev_StopHistoryPlay(int hLogin, int hStream) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_playback::HostMgr_Dev_StopHistoryPlay, hLogin, hStream);
}

int vexo_HostMgr_Dev_SetHistoryStreamCallback(int hLogin, int hStream, vexo_hostmgr_stream_callback pfnStreamCallBack,
                                              void* pUser) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_playback::HostMgr_Dev_SetHistoryStreamCallback, hLogin,
                      hStream, pfnStreamCallBack, pUser);
}

// ---- record-file query ---------------------------------------------------------------------------------------------

int vexo_HostMgr_Dev_QueryFile(int hLogin, int lChannel, _tagVexoHostMgrQueryFile* pQuery) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_queryfile::HostMgr_Dev_QueryFile, hLogin, lChannel, pQuery);
}

int vexo_HostMgr_Dev_GetQueryFileResult(int hLogin, int lIndex, _tagVexoHostMgrQueryFileResult* pResult,
                                        unsigned int dwCount) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_queryfile::HostMgr_Dev_GetQueryFileResult, hLogin, lIndex,
                      pResult, dwCount);
}

int vexo_HostMgr_Dev_QueryRelease(int hLogin) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_queryfile::HostMgr_Dev_QueryRelease, hLogin);
}

// ---- talk ----------------------------------------------------------------------------------------------------------

int vexo_HostMgr_Dev_StartTalk(int hLogin, _tagVexoHostMgrTalkParam* pParam) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_talkback::HostMgr_Dev_StartTalkEx, hLogin, 0, pParam);
}

int vexo_HostMgr_Dev_StartTalkEx(int hLogin, int lChannel, _tagVexoHostMgrTalkParam* pParam) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_talkback::HostMgr_Dev_StartTalkEx, hLogin, lChannel, pParam);
}

int vexo_HostMgr_Dev_InputTalkData(int hLogin, int hTalk, char* pData, unsigned int dwDataSize) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_talkback::HostMgr_Dev_InputTalkData, hLogin, hTalk, pData,
                      dwDataSize);
}

int vexo_HostMgr_Dev_StopTalk(int hLogin, int hTalk) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_talkback::HostMgr_Dev_StopTalk, hLogin, hTalk);
}

int vexo_HostMgr_Dev_SetTalkCallback(int hLogin, int hTalk, vexo_hostmgr_talk_callback pfnTalkCallBack, void* pUser) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_talkback::HostMgr_Dev_SetTalkCallback, hLogin, hTalk,
                      pfnTalkCallBack, pUser);
}

// ---- alarms --------------------------------------------------------------------------------------------------------

int vexo_HostMgr_Dev_SetAlarmCallback(int hLogin, int lChannel, int lStreamType,
                                      vexo_hostmgr_alarm_callback pfnAlarmCallBack, void* pUser) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_alarm::HostMgr_Dev_SetAlarmCallback, hLogin, lChannel,
                      lStreamType, pfnAlarmCallBack, pUser);
}

int vexo_HostMgr_Dev_GetAlarmStatus(int hLogin, _tagVexoHostMgrALarmStatusInfo** ppStatus, unsigned int* pdwCount) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_alarm::HostMgr_Dev_GetAlarmStatus, hLogin, ppStatus,
                      pdwCount);
}

int vexo_HostMgr_Dev_ReleaseAlarmStatus(_tagVexoHostMgrALarmStatusInfo* pStatus) {
    return GlobalFrame(HOSTMGR_HERE, &vexo_hostmgr_res_manage::HostMgr_Dev_ReleaseAlarmStatus, pStatus);
}

// ---- picture capture -----------------------------------------------------------------------------------------------

int vexo_HostMgr_Dev_CapturePicture(int hLogin, int lChannel, int lStreamIdx, char* sPicBuffer,
                                    unsigned int dwBufferSize, unsigned int* lpSizeReturned) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_capture::HostMgr_Dev_CapturePicture, hLogin, lChannel,
                      lStreamIdx, sPicBuffer, dwBufferSize, lpSizeReturned);
}

int vexo_HostMgr_Dev_StartCapturePicture(int hLogin, int lChannel, int lStreamIdx, _tagVexoCapturePictureCfg* pCfg,
                                         vexo_hostmgr_capture_callback pfnCallBack, void* pUser) {
    return LoginFrame(HOSTMGR_HERE, hLogin, &vexo_hostmgr_capture::HostMgr_Dev_StartCapturePicture, hLogin, lChannel,
                      lStreamIdx, pCfg, pfnCallBack, pUser);
}

int vexo_HostMgr_Dev_SetCapturePictureAlarmTiger(int hCapture, vexo_hostmgr_capture_callback pfnCallBack, void* pUser) {
    return HandleFrame(HOSTMGR_HERE, hCapture, &vexo_hostmgr_capture::HostMgr_Dev_SetCapturePictureAlarmTiger,
                       pfnCallBack, pUser);
}

int vexo_HostMgr_Dev_StopCapturePicture(int hCapture) {
    if (!IsInited(HOSTMGR_HERE))
        return -1;
    printf("hCapture:0x%x, hLogin 0x%x\n", static_cast<unsigned int>(hCapture),
           static_cast<unsigned int>(HostMgrLoginOfHandle(hCapture)));
    return HandleFrame(HOSTMGR_HERE, hCapture, &vexo_hostmgr_capture::HostMgr_Dev_StopCapturePicture);
}

// ---- not supported -------------------------------------------------------------------------------------------------

int vexo_HostMgr_Dev_FormatDisk(int hLogin, int) {
    return NotSupportedForLogin(HOSTMGR_HERE, hLogin);
}

int vexo_HostMgr_Dev_GetFormatProgress(int hLogin, int, int*, int*, int*) {
    return NotSupportedForLogin(HOSTMGR_HERE, hLogin);
}

int vexo_HostMgr_Dev_CloseFormatHandle(int hLogin, int) {
    return NotSupportedForLogin(HOSTMGR_HERE, hLogin);
}

int vexo_HostMgr_Dev_GetUpgradeState(int hLogin, int) {
    return NotSupportedForLogin(HOSTMGR_HERE, hLogin);
}

int vexo_HostMgr_Dev_GetUpgradeProgress(int hLogin, int) {
    return NotSupportedForLogin(HOSTMGR_HERE, hLogin);
}

int vexo_HostMgr_Dev_CloseUpgradeHandle(int hLogin, int) {
    return NotSupportedForLogin(HOSTMGR_HERE, hLogin);
}

int vexo_HostMgr_Dev_Upgrade(int hLogin, char*, unsigned int, int) {
    return LookupFrame(HOSTMGR_HERE, hLogin);
}

int vexo_HostMgr_Dev_TstGetRtspConfig(int, int, int, int*, int*, char*, int, int*, int*, int*) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_CreateSearchDevice(int, int, vexo_hostmgr_search_callback, void*) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_CreateSearchDeviceEx(int, unsigned int*, unsigned int, int, vexo_hostmgr_search_callback, void*) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_StartSearchDevice(int) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_StopSearchDevice(int) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_GetSearchResult(int, int, _tagVexoHostMgrSearchDeviceInfo*, unsigned int) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_DestroySearchDevice(int) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_ModifyDeviceInfo(int, unsigned int, _tagVexoHostMgrSearchDeviceInfo*) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_CapturePictureByDeviceInfo(_tagVexoHostMgrSearchDeviceInfo*, char*, unsigned int, unsigned int*) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_QuickResponseCode(char*, _tagVexoHostMgrQRCode*) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_GetChannelBitrates(int, int, int, unsigned int*, unsigned int*) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_GetOnlineUserInfo(int, VexoHostMgrOnlineUserInfo_T*, unsigned int) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_FindFileMonthly(int, unsigned int, unsigned int, unsigned int, unsigned int, unsigned int*) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_GetRtspUrl(int, int, int, int, int, _tagVexoHostMgrTimeV2*, _tagVexoHostMgrTimeV2*, char*,
                                unsigned int) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_QueryLogOpen(int, int, unsigned int, unsigned int, _tagVexoHostMgrTimeV2*, _tagVexoHostMgrTimeV2*,
                                  unsigned int) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_QueryLogResults(int, int, int, VexoHostMgrLogResult_T*, unsigned int) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_QueryLogClose(int, int) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_GetIPCProtocolList(int, VexoHostMgrIPCProtoType_T*, unsigned int) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_IPCProtocolManage(int, unsigned int, unsigned int, void*, unsigned int) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_GetSupportManagerHostProtocol(int, VexoHostMgrManagerHostProtocol_T*, unsigned int) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_Get3GDeviceList(int, VexoHostMgr3GDevice_T*, unsigned int) {
    return NotSupported(HOSTMGR_HERE);
}

int vexo_HostMgr_Dev_GetDDNSServiceAbility(int, VexoHostMgrDDNSService_T*, unsigned int) {
    return NotSupported(HOSTMGR_HERE);
}

}  // namespace vexo_soft
