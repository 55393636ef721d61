#include "exported_functions.h"

#include <algorithm>
#include <iterator>
#include <ostream>

#include "hostmgr_dev.h"

using namespace vexo_soft;

// clang-format off
#define ROW(name, frame, ...) {#name, Frame::frame, [](int handle) -> int { (void)handle; __VA_ARGS__; }}

static const ExportedFunction FUNCTIONS[] = {
    ROW(vexo_HostMgr_Dev_Login, GLOBAL, return vexo_HostMgr_Dev_Login(nullptr, nullptr, nullptr)),
    ROW(vexo_HostMgr_Dev_LoginV2, GLOBAL, return vexo_HostMgr_Dev_LoginV2(nullptr, nullptr, nullptr, 0, -1)),
    ROW(vexo_HostMgr_Dev_Logout, GLOBAL, return vexo_HostMgr_Dev_Logout(handle)),
    ROW(vexo_HostMgr_Dev_SetHook_InsertLog, GLOBAL,
        vexo_HostMgr_Dev_SetHook_InsertLog(0, nullptr, nullptr); return -1),
    ROW(vexo_HostMgr_Dev_GetConfig, GLOBAL,
        return vexo_HostMgr_Dev_GetConfig(handle, 30000, 0, 0, nullptr, 0, nullptr, 0, nullptr)),
    ROW(vexo_HostMgr_Dev_SetConfig, GLOBAL,
        return vexo_HostMgr_Dev_SetConfig(handle, 3011, 0, 0, nullptr, 0, nullptr, 0)),
    ROW(vexo_HostMgr_Dev_GetAbility, GLOBAL, return vexo_HostMgr_Dev_GetAbility(handle, 0, nullptr, 0, nullptr, 0)),
    ROW(vexo_HostMgr_Dev_ReadCfg, GLOBAL, return vexo_HostMgr_Dev_ReadCfg(nullptr) == nullptr ? -1 : 0),
    ROW(vexo_HostMgr_Dev_SaveCfg, GLOBAL, return vexo_HostMgr_Dev_SaveCfg(nullptr, nullptr, 0)),
    ROW(vexo_HostMgr_Dev_Control, LOGIN,
        return vexo_HostMgr_Dev_Control(handle, 10, 0, 0, nullptr, 0, nullptr, 0, nullptr, 0)),

    ROW(vexo_HostMgr_Dev_StartRealPlay, LOGIN, return vexo_HostMgr_Dev_StartRealPlay(handle, 1, 1)),
    ROW(vexo_HostMgr_Dev_StopRealPlay, LOGIN, return vexo_HostMgr_Dev_StopRealPlay(handle, 1, 1)),
    ROW(vexo_HostMgr_Dev_CreateRealStreamBuffer, LOGIN,
        return vexo_HostMgr_Dev_CreateRealStreamBuffer(handle, 1, 1)),
    ROW(vexo_HostMgr_Dev_RealStreamBufferEnableAudio, STREAM,
        return vexo_HostMgr_Dev_RealStreamBufferEnableAudio(handle, 1)),
    ROW(vexo_HostMgr_Dev_ReadRealOneFrame, STREAM,
        return vexo_HostMgr_Dev_ReadRealOneFrame(handle, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr)),
    ROW(vexo_HostMgr_Dev_ReleaseRealOneFrame, STREAM, return vexo_HostMgr_Dev_ReleaseRealOneFrame(handle)),
    ROW(vexo_HostMgr_Dev_DestroyRealStreamBuffer, STREAM, return vexo_HostMgr_Dev_DestroyRealStreamBuffer(handle)),
    ROW(vexo_HostMgr_Dev_StartZeroCodec, LOGIN, return vexo_HostMgr_Dev_StartZeroCodec(handle, 0, 0, nullptr)),
    ROW(vexo_HostMgr_Dev_SetZeroCodecMode, DERIVED, return vexo_HostMgr_Dev_SetZeroCodecMode(handle, 0, 0, nullptr)),
    ROW(vexo_HostMgr_Dev_ReadZeroCodecStream, DERIVED,
        return vexo_HostMgr_Dev_ReadZeroCodecStream(handle, 0, nullptr, nullptr, nullptr)),
    ROW(vexo_HostMgr_Dev_StopZeroCodec, DERIVED, return vexo_HostMgr_Dev_StopZeroCodec(handle)),

    ROW(vexo_HostMgr_Dev_StartHistoryPlay, LOGIN,
        return vexo_HostMgr_Dev_StartHistoryPlay(handle, 1, 0, nullptr, nullptr)),
    ROW(vexo_HostMgr_Dev_StartHistoryPlayV2, LOGIN,
        return vexo_HostMgr_Dev_StartHistoryPlayV2(handle, 1, 0, nullptr, nullptr, nullptr, nullptr)),
    ROW(vexo_HostMgr_Dev_StopHistoryPlay, LOGIN, return vexo_HostMgr_Dev_StopHistoryPlay(handle, 0)),
    ROW(vexo_HostMgr_Dev_SetHistoryStreamCallback, LOGIN,
        return vexo_HostMgr_Dev_SetHistoryStreamCallback(handle, 0, nullptr, nullptr)),

    ROW(vexo_HostMgr_Dev_QueryFile, LOGIN, return vexo_HostMgr_Dev_QueryFile(handle, 1, nullptr)),
    ROW(vexo_HostMgr_Dev_GetQueryFileResult, LOGIN,
        return vexo_HostMgr_Dev_GetQueryFileResult(handle, 0, nullptr, 0)),
    ROW(vexo_HostMgr_Dev_QueryRelease, LOGIN, return vexo_HostMgr_Dev_QueryRelease(handle)),

    ROW(vexo_HostMgr_Dev_StartTalk, LOGIN, return vexo_HostMgr_Dev_StartTalk(handle, nullptr)),
    ROW(vexo_HostMgr_Dev_StartTalkEx, LOGIN, return vexo_HostMgr_Dev_StartTalkEx(handle, 0, nullptr)),
    ROW(vexo_HostMgr_Dev_InputTalkData, LOGIN, return vexo_HostMgr_Dev_InputTalkData(handle, 0, nullptr, 0)),
    ROW(vexo_HostMgr_Dev_StopTalk, LOGIN, return vexo_HostMgr_Dev_StopTalk(handle, 0)),
    ROW(vexo_HostMgr_Dev_SetTalkCallback, LOGIN,
        return vexo_HostMgr_Dev_SetTalkCallback(handle, 0, nullptr, nullptr)),

    ROW(vexo_HostMgr_Dev_SetAlarmCallback, LOGIN,
        return vexo_HostMgr_Dev_SetAlarmCallback(handle, 0, 0, nullptr, nullptr)),
    ROW(vexo_HostMgr_Dev_GetAlarmStatus, LOGIN, return vexo_HostMgr_Dev_GetAlarmStatus(handle, nullptr, nullptr)),
    ROW(vexo_HostMgr_Dev_ReleaseAlarmStatus, GLOBAL, return vexo_HostMgr_Dev_ReleaseAlarmStatus(nullptr)),

    ROW(vexo_HostMgr_Dev_CapturePicture, LOGIN,
        return vexo_HostMgr_Dev_CapturePicture(handle, 1, 1, nullptr, 0, nullptr)),
    ROW(vexo_HostMgr_Dev_StartCapturePicture, LOGIN,
        return vexo_HostMgr_Dev_StartCapturePicture(handle, 1, 1, nullptr, nullptr, nullptr)),
    ROW(vexo_HostMgr_Dev_SetCapturePictureAlarmTiger, DERIVED,
        return vexo_HostMgr_Dev_SetCapturePictureAlarmTiger(handle, nullptr, nullptr)),
    ROW(vexo_HostMgr_Dev_StopCapturePicture, DERIVED, return vexo_HostMgr_Dev_StopCapturePicture(handle)),

    ROW(vexo_HostMgr_Dev_FormatDisk, NOT_SUPPORTED_LOGIN, return vexo_HostMgr_Dev_FormatDisk(handle, 0)),
    ROW(vexo_HostMgr_Dev_GetFormatProgress, NOT_SUPPORTED_LOGIN,
        return vexo_HostMgr_Dev_GetFormatProgress(handle, 0, nullptr, nullptr, nullptr)),
    ROW(vexo_HostMgr_Dev_CloseFormatHandle, NOT_SUPPORTED_LOGIN, return vexo_HostMgr_Dev_CloseFormatHandle(handle, 0)),
    ROW(vexo_HostMgr_Dev_GetUpgradeState, NOT_SUPPORTED_LOGIN, return vexo_HostMgr_Dev_GetUpgradeState(handle, 0)),
    ROW(vexo_HostMgr_Dev_GetUpgradeProgress, NOT_SUPPORTED_LOGIN,
        return vexo_HostMgr_Dev_GetUpgradeProgress(handle, 0)),
    ROW(vexo_HostMgr_Dev_CloseUpgradeHandle, NOT_SUPPORTED_LOGIN,
        return vexo_HostMgr_Dev_CloseUpgradeHandle(handle, 0)),
    ROW(vexo_HostMgr_Dev_Upgrade, LOOKUP, return vexo_HostMgr_Dev_Upgrade(handle, nullptr, 0, 0)),

    ROW(vexo_HostMgr_Dev_TstGetRtspConfig, NOT_SUPPORTED,
        return vexo_HostMgr_Dev_TstGetRtspConfig(handle, 0, 0, nullptr, nullptr, nullptr, 0, nullptr, nullptr,
                                                 nullptr)),
    ROW(vexo_HostMgr_Dev_CreateSearchDevice, NOT_SUPPORTED,
        return vexo_HostMgr_Dev_CreateSearchDevice(handle, 0, nullptr, nullptr)),
    ROW(vexo_HostMgr_Dev_CreateSearchDeviceEx, NOT_SUPPORTED,
        return vexo_HostMgr_Dev_CreateSearchDeviceEx(handle, nullptr, 0, 0, nullptr, nullptr)),
    ROW(vexo_HostMgr_Dev_StartSearchDevice, NOT_SUPPORTED, return vexo_HostMgr_Dev_StartSearchDevice(handle)),
    ROW(vexo_HostMgr_Dev_StopSearchDevice, NOT_SUPPORTED, return vexo_HostMgr_Dev_StopSearchDevice(handle)),
    ROW(vexo_HostMgr_Dev_GetSearchResult, NOT_SUPPORTED,
        return vexo_HostMgr_Dev_GetSearchResult(handle, 0, nullptr, 0)),
    ROW(vexo_HostMgr_Dev_DestroySearchDevice, NOT_SUPPORTED, return vexo_HostMgr_Dev_DestroySearchDevice(handle)),
    ROW(vexo_HostMgr_Dev_ModifyDeviceInfo, NOT_SUPPORTED,
        return vexo_HostMgr_Dev_ModifyDeviceInfo(handle, 0, nullptr)),
    ROW(vexo_HostMgr_Dev_CapturePictureByDeviceInfo, NOT_SUPPORTED,
        return vexo_HostMgr_Dev_CapturePictureByDeviceInfo(nullptr, nullptr, 0, nullptr)),
    ROW(vexo_HostMgr_Dev_QuickResponseCode, NOT_SUPPORTED, return vexo_HostMgr_Dev_QuickResponseCode(nullptr, nullptr)),
    ROW(vexo_HostMgr_Dev_GetChannelBitrates, NOT_SUPPORTED,
        return vexo_HostMgr_Dev_GetChannelBitrates(handle, 0, 0, nullptr, nullptr)),
    ROW(vexo_HostMgr_Dev_GetOnlineUserInfo, NOT_SUPPORTED,
        return vexo_HostMgr_Dev_GetOnlineUserInfo(handle, nullptr, 0)),
    ROW(vexo_HostMgr_Dev_FindFileMonthly, NOT_SUPPORTED,
        return vexo_HostMgr_Dev_FindFileMonthly(handle, 0, 0, 0, 0, nullptr)),
    ROW(vexo_HostMgr_Dev_GetRtspUrl, NOT_SUPPORTED,
        return vexo_HostMgr_Dev_GetRtspUrl(handle, 0, 0, 0, 0, nullptr, nullptr, nullptr, 0)),
    ROW(vexo_HostMgr_Dev_QueryLogOpen, NOT_SUPPORTED,
        return vexo_HostMgr_Dev_QueryLogOpen(handle, 0, 0, 0, nullptr, nullptr, 0)),
    ROW(vexo_HostMgr_Dev_QueryLogResults, NOT_SUPPORTED,
        return vexo_HostMgr_Dev_QueryLogResults(handle, 0, 0, nullptr, 0)),
    ROW(vexo_HostMgr_Dev_QueryLogClose, NOT_SUPPORTED, return vexo_HostMgr_Dev_QueryLogClose(handle, 0)),
    ROW(vexo_HostMgr_Dev_GetIPCProtocolList, NOT_SUPPORTED,
        return vexo_HostMgr_Dev_GetIPCProtocolList(handle, nullptr, 0)),
    ROW(vexo_HostMgr_Dev_IPCProtocolManage, NOT_SUPPORTED,
        return vexo_HostMgr_Dev_IPCProtocolManage(handle, 0, 0, nullptr, 0)),
    ROW(vexo_HostMgr_Dev_GetSupportManagerHostProtocol, NOT_SUPPORTED,
        return vexo_HostMgr_Dev_GetSupportManagerHostProtocol(handle, nullptr, 0)),
    ROW(vexo_HostMgr_Dev_Get3GDeviceList, NOT_SUPPORTED, return vexo_HostMgr_Dev_Get3GDeviceList(handle, nullptr, 0)),
    ROW(vexo_HostMgr_Dev_GetDDNSServiceAbility, NOT_SUPPORTED,
        return vexo_HostMgr_Dev_GetDDNSServiceAbility(handle, nullptr, 0)),
};
// clang-format on

void PrintTo(const ExportedFunction& function, std::ostream* out) {
    *out << function.name;
}

std::vector<ExportedFunction> ExportedFunctions() {
    return {std::begin(FUNCTIONS), std::end(FUNCTIONS)};
}

std::vector<ExportedFunction> ExportedFunctions(const std::vector<Frame>& frames) {
    std::vector<ExportedFunction> functions;
    std::copy_if(std::begin(FUNCTIONS), std::end(FUNCTIONS), std::back_inserter(functions),
                 [&frames](const ExportedFunction& function) {
                     return std::find(frames.begin(), frames.end(), function.frame) != frames.end();
                 });
    return functions;
}
