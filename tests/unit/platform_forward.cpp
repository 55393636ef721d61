// The platform operations themselves, as the library links them: each writes its line and asks the mock.
#include "platform_mock.h"

#include <pthread.h>
#include <string.h>

#include <sstream>

namespace {

/** A number that reads better in hexadecimal. */
struct Hex {
    unsigned int value;
};

std::string Text(const char* text) {
    return text == nullptr ? "null" : text;
}
std::string Text(unsigned int value) {
    return std::to_string(value);
}
std::string Text(int value) {
    return std::to_string(value);
}
std::string Text(long value) {
    return std::to_string(value);
}
std::string Text(unsigned long value) {
    return std::to_string(value);
}
std::string Text(Hex hex) {
    std::ostringstream text;
    text << "0x" << std::hex << hex.value;
    return text.str();
}
std::string Text(const std::string& text) {
    return text;
}
std::string Text(const void* pointer) {
    return pointer == nullptr ? "null" : "set";
}
std::string Text(const vexo_ip_struct* ip) {
    return (ip->family != 0 ? Text(ip->family) + " " : "") + ip->text;
}
std::string Text(const vexo_read_av_list_note* note) {
    return Text(note->note[0]) + ":" + Text(note->note[1]);
}
std::string Text(const struct timeval* time) {
    return Text(static_cast<long>(time->tv_sec)) + "." + Text(static_cast<long>(time->tv_usec));
}
std::string Text(const vexo_time_struct* time) {
    char text[64];
    snprintf(text, sizeof(text), "%u-%u-%u %u:%u:%u", time->year, time->month, time->day, time->hour, time->minute,
             time->second);
    return text;
}
std::string Text(const vexo_thread_creat_ctl* ctl) {
    return "{" + Text(ctl->joinable) + ", " + Text(ctl->policy) + ", " + (ctl->entry != nullptr ? "entry" : "null") +
           ", " + (ctl->argument != nullptr ? "argument" : "null") + ", " + Text(ctl->priority) + ", " +
           Text(Hex{ctl->stack_size}) + "}";
}
std::string Text(const vexo_ipc_ptz_ctrl_para* para) {
    std::string text = "{" + Text(para->kind);
    for (const unsigned int value : para->value)
        text += ", " + Text(value);
    return text + "}";
}

std::string List(const unsigned int* values, unsigned int count) {
    std::string text = "{";
    for (unsigned int index = 0; index < count; ++index)
        text += (index != 0 ? ", " : "") + Text(values[index]);
    return text + "}";
}
std::string FieldText(const char* field, size_t size) {
    return std::string(field, strnlen(field, size));
}
/** A thread id as a thread gives it for itself; it is another in every run. */
std::string Caller(unsigned long id) {
    return id == (unsigned long)pthread_self() ? "self" : "another";
}

/** The mock, once "operation(inputs)" has been recorded. */
template <typename... Inputs>
PlatformMock& Called(const char* operation, Inputs... inputs) {
    std::string list;
    ((list += (list.empty() ? "" : ", ") + Text(inputs)), ...);
    PlatformMock& mock = PlatformMock::Current(operation);
    mock.Record(std::string(operation) + "(" + list + ")");
    return mock;
}

PlatformMock& Mock() {
    return PlatformMock::Current("the platform");
}

}  // namespace

// ---- utility platform
// ------------------------------------------------------------------------------------------------
int vexo_utility_init(vexo_utility_ops_type type) {
    return Called(__func__, type).vexo_utility_init(type);
}
void* vexo_utility_malloc(vexo_user_id user, unsigned int purpose, unsigned int size, unsigned int count) {
    return Called(__func__, user, Hex{purpose}, size, count).vexo_utility_malloc(user, purpose, size, count);
}
void vexo_utility_free(const char* file, const char* function, void* memory) {
    Called(__func__, file, function, Mock().MemoryText(memory)).vexo_utility_free(file, function, memory);
}
vexo_lock* vexo_utility_new_lock(vexo_user_id user, const char* name) {
    return Called(__func__, user, name).vexo_utility_new_lock(user, name);
}
void vexo_utility_delete_lock(vexo_lock* lock, const char* file, const char* function) {
    Called(__func__, Mock().LockText(lock), file, function).vexo_utility_delete_lock(lock, file, function);
}
vexo_rw_lock* vexo_utility_new_rw_lock(vexo_user_id user, const char* name) {
    return Called(__func__, user, name).vexo_utility_new_rw_lock(user, name);
}
void vexo_utility_delete_rw_lock(vexo_rw_lock* lock, const char* file, const char* function) {
    Called(__func__, Mock().LockText(lock), file, function).vexo_utility_delete_rw_lock(lock, file, function);
}
int vexo_utility_creat_thread(const vexo_thread_creat_ctl* ctl, const char* name, unsigned long* id) {
    return Called(__func__, ctl, name).vexo_utility_creat_thread(ctl, name, id);
}
int vexo_utility_retrieve_thread(unsigned long id) {
    return Called(__func__, id).vexo_utility_retrieve_thread(id);
}
void vexo_utility_enter_thread(unsigned long id, const char* name) {
    Called(__func__, Caller(id), name).vexo_utility_enter_thread(id, name);
}
void vexo_utility_exit_thread(unsigned long id) {
    Called(__func__, Caller(id)).vexo_utility_exit_thread(id);
}
void vexo_utility_sleep_ms(unsigned int milliseconds) {
    Called(__func__, milliseconds).vexo_utility_sleep_ms(milliseconds);
}
long vexo_utility_cnt_delta_ms(const struct timeval* from, const struct timeval* to) {
    return Called(__func__, from, to).vexo_utility_cnt_delta_ms(from, to);
}
void vexo_utility_add_time(struct timeval* time, long milliseconds) {
    Called(__func__, static_cast<const struct timeval*>(time), milliseconds).vexo_utility_add_time(time, milliseconds);
}
void vexo_utility_linux_to_vexo_time(long seconds, vexo_time_struct* time) {
    Called(__func__, seconds).vexo_utility_linux_to_vexo_time(seconds, time);
}
long vexo_utility_vexo_to_linux_time(const vexo_time_struct* time) {
    return Called(__func__, time).vexo_utility_vexo_to_linux_time(time);
}
unsigned int vexo_utility_min(unsigned int left, unsigned int right) {
    return Called(__func__, left, right).vexo_utility_min(left, right);
}
VEXO_BOOL vexo_utility_is_file_exist(const char* path) {
    return Called(__func__, path).vexo_utility_is_file_exist(path);
}
int vexo_utility_creat_dir(const char* path) {
    return Called(__func__, path).vexo_utility_creat_dir(path);
}
int vexo_utility_delete_dir(const char* path) {
    return Called(__func__, path).vexo_utility_delete_dir(path);
}
vexo_xml_operate* vexo_utility_new_xml_operate(vexo_user_id owner, const char* label) {
    return Called(__func__, owner, label).vexo_utility_new_xml_operate(owner, label);
}
void vexo_utility_delete_xml_operate(vexo_xml_operate* document, const char* file, const char* label) {
    Called(__func__, file, label).vexo_utility_delete_xml_operate(document, file, label);
}
int vexo_utility_get_event_info(unsigned int user, vexo_event_detail_info* info, unsigned int capacity,
                                unsigned int* count) {
    return Called(__func__, user, static_cast<const void*>(info), capacity)
        .vexo_utility_get_event_info(user, info, capacity, count);
}
int vexo_utility_regist_diag(vexo_diagnose_client* client, const char* title, const char* menu) {
    return Called(__func__).vexo_utility_regist_diag(client, title, menu);
}

// ---- configuration manager
// -------------------------------------------------------------------------------------------
int vexo_cfgm_init() {
    return Called(__func__).vexo_cfgm_init();
}
const vexo_dev_capability* vexo_cfgm_get_dev_cap() {
    return Called(__func__).vexo_cfgm_get_dev_cap();
}
int vexo_cfgm_get_usr_num(unsigned int* num) {
    return Called(__func__).vexo_cfgm_get_usr_num(num);
}
int vexo_cfgm_get_usr_info(unsigned int index, vexo_cfgm_usr_info* info) {
    return Called(__func__, index).vexo_cfgm_get_usr_info(index, info);
}
int vexo_cfgm_get_host_manager_enable(unsigned int link, VEXO_BOOL* enable) {
    return Called(__func__, link).vexo_cfgm_get_host_manager_enable(link, enable);
}
int vexo_cfgm_get_host_manager_param(unsigned int link, unsigned int index, char* name, unsigned int name_len,
                                     char* value, unsigned int value_len) {
    return Called(__func__, link, index, name_len, value_len)
        .vexo_cfgm_get_host_manager_param(link, index, name, name_len, value, value_len);
}
const vexo_network_cap* vexo_cfgm_get_network_cap() {
    return Called(__func__).vexo_cfgm_get_network_cap();
}
int vexo_cfgm_get_local_eth_cfg(const char* ifname, vexo_eth_cfg* cfg) {
    return Called(__func__, ifname).vexo_cfgm_get_local_eth_cfg(ifname, cfg);
}
int vexo_cfgm_get_dns_cfg(vexo_dns_cfg* cfg) {
    return Called(__func__).vexo_cfgm_get_dns_cfg(cfg);
}
int vexo_cfgm_get_upnp_cfg_ex(VEXO_BOOL* enable) {
    return Called(__func__).vexo_cfgm_get_upnp_cfg_ex(enable);
}
int vexo_cfgm_get_http_port(unsigned int* port) {
    return Called(__func__).vexo_cfgm_get_http_port(port);
}
int vexo_cfgm_get_https_port(unsigned int* port) {
    return Called(__func__).vexo_cfgm_get_https_port(port);
}
int vexo_cfgm_get_onvif_port(unsigned int* port) {
    return Called(__func__).vexo_cfgm_get_onvif_port(port);
}
int vexo_cfgm_get_rtmp_port(unsigned int* port) {
    return Called(__func__).vexo_cfgm_get_rtmp_port(port);
}
int vexo_cfgm_get_rtsp_port(unsigned int* port) {
    return Called(__func__).vexo_cfgm_get_rtsp_port(port);
}
int vexo_cfgm_get_pppoe_cfg(vexo_pppoe_cfg* cfg) {
    return Called(__func__).vexo_cfgm_get_pppoe_cfg(cfg);
}

// ---- model library: logins, live frames, zero channel
// ----------------------------------------------------------------
int vexo_model_get_usr_info_byname(const char* name, vexo_dev_usr_info* info) {
    return Called(__func__, name).vexo_model_get_usr_info_byname(name, info);
}
int vexo_model_login(const char* user, const char* password, const vexo_ip_struct* ip, unsigned int* id,
                     VEXO_BOOL visible, VEXO_BOOL exclusive) {
    return Called(__func__, user, password, ip, visible, exclusive)
        .vexo_model_login(user, password, ip, id, visible, exclusive);
}
int vexo_model_remote_login(const char* user, const char* password, const vexo_ip_struct* ip, unsigned int* id,
                            VEXO_BOOL encrypted, char* challenge, char* answer) {
    return Called(__func__, user, password, ip, encrypted, static_cast<const char*>(challenge),
                  static_cast<const char*>(answer))
        .vexo_model_remote_login(user, password, ip, id, encrypted, challenge, answer);
}
int vexo_model_logout(unsigned int id, VEXO_BOOL forced) {
    return Called(__func__, id, forced).vexo_model_logout(id, forced);
}
int vexo_model_get_usr_authority(const char* user, vexo_dev_usr_authority* authority) {
    return Called(__func__, user).vexo_model_get_usr_authority(user, authority);
}
int vexo_model_first_get_frame(unsigned int channel, vexo_user_id user, vexo_enc_str_type type, unsigned char** frame,
                               vexo_read_av_list_note* note, VEXO_BOOL* no_video) {
    return Called(__func__, channel, user, type).vexo_model_first_get_frame(channel, user, type, frame, note, no_video);
}
int vexo_model_get_frame(unsigned int channel, vexo_user_id user, vexo_enc_str_type type,
                         const vexo_read_av_list_note* current, unsigned char** frame, vexo_read_av_list_note* note,
                         VEXO_BOOL* no_video) {
    return Called(__func__, channel, user, type, current)
        .vexo_model_get_frame(channel, user, type, current, frame, note, no_video);
}
int vexo_model_rel_frame(unsigned int channel, vexo_user_id user, vexo_enc_str_type type,
                         const vexo_read_av_list_note* note) {
    return Called(__func__, channel, user, type, note).vexo_model_rel_frame(channel, user, type, note);
}
void vexo_rmta_dump_frame_list(unsigned int channel, vexo_enc_str_type type, vexo_print_func print) {
    Called(__func__, channel, type).vexo_rmta_dump_frame_list(channel, type, print);
}
int vexo_model_zero_channel_set_enable(unsigned int id, VEXO_BOOL enable) {
    return Called(__func__, id, enable).vexo_model_zero_channel_set_enable(id, enable);
}
int vexo_model_zero_channel_set_video_channels(unsigned int id, const unsigned int* channels, unsigned int count) {
    return Called(__func__, id, List(channels, count), count)
        .vexo_model_zero_channel_set_video_channels(id, channels, count);
}
int vexo_model_zero_channel_first_get_frame(vexo_user_id user, unsigned char** frame, vexo_read_av_list_note* note) {
    return Called(__func__, user).vexo_model_zero_channel_first_get_frame(user, frame, note);
}
int vexo_model_zero_channel_get_frame(vexo_user_id user, const vexo_read_av_list_note* current, unsigned char** frame,
                                      vexo_read_av_list_note* note) {
    return Called(__func__, user, current).vexo_model_zero_channel_get_frame(user, current, frame, note);
}
int vexo_model_zero_channel_rel_frame(vexo_user_id user, const vexo_read_av_list_note* note) {
    return Called(__func__, user, note).vexo_model_zero_channel_rel_frame(user, note);
}
int vexo_model_zero_channel_get_resolution_ability(vexo_resolution_ability* ability) {
    return Called(__func__).vexo_model_zero_channel_get_resolution_ability(ability);
}
int vexo_model_zero_channel_get_resolution(vexo_resolution* resolution) {
    return Called(__func__).vexo_model_zero_channel_get_resolution(resolution);
}
int vexo_model_zero_channel_get_bps(unsigned int* bps, unsigned int* mode) {
    return Called(__func__).vexo_model_zero_channel_get_bps(bps, mode);
}
int vexo_model_zero_channel_get_fps(unsigned int* fps) {
    return Called(__func__).vexo_model_zero_channel_get_fps(fps);
}

// ---- model library: recordings and talk
// ------------------------------------------------------------------------------
int vexo_model_inquiry_rec_by_time(unsigned int id, vexo_user_id user, unsigned int channel,
                                   const vexo_time_struct* start, const vexo_time_struct* stop, unsigned int type_mask,
                                   unsigned int inquiry_type, vexo_rec_file_inquiry_result** result) {
    return Called(__func__, id, user, channel, start, stop, Hex{type_mask}, inquiry_type)
        .vexo_model_inquiry_rec_by_time(id, user, channel, start, stop, type_mask, inquiry_type, result);
}
void vexo_model_free_inquiry_rec_result(vexo_rec_file_inquiry_result* result) {
    Called(__func__).vexo_model_free_inquiry_rec_result(result);
}
vexo_avss_file_reader* vexo_model_new_avss_reader(vexo_user_id user, const char* name) {
    return Called(__func__, user, name).vexo_model_new_avss_reader(user, name);
}
void vexo_model_delete_avss_reader(vexo_avss_file_reader* reader, const char* file, const char* function) {
    Called(__func__, file, function).vexo_model_delete_avss_reader(reader, file, function);
}
vexo_advance_avss_file_reader* vexo_model_new_advance_avss_reader(vexo_user_id user, const char* name) {
    return Called(__func__, user, name).vexo_model_new_advance_avss_reader(user, name);
}
void vexo_model_delete_advance_avss_reader(vexo_advance_avss_file_reader* reader, const char* file,
                                           const char* function) {
    Called(__func__, file, function).vexo_model_delete_advance_avss_reader(reader, file, function);
}
int vexo_model_start_talking(unsigned int id, vexo_talk_mode mode, unsigned int channel, unsigned int* talk) {
    return Called(__func__, id, mode, channel).vexo_model_start_talking(id, mode, channel, talk);
}
int vexo_model_stop_talking(unsigned int talk) {
    return Called(__func__, talk).vexo_model_stop_talking(talk);
}
int vexo_model_get_talking_frame(unsigned int talk, unsigned char* buffer, unsigned int size) {
    return Called(__func__, talk, size).vexo_model_get_talking_frame(talk, buffer, size);
}
int vexo_model_play_talking_frame(unsigned int talk, const unsigned char* frame) {
    return Called(__func__, talk).vexo_model_play_talking_frame(talk, frame);
}

// ---- model library: device
// -------------------------------------------------------------------------------------------
int vexo_model_send_ptz_cmd(unsigned int id, unsigned int channel, unsigned int code,
                            const vexo_ipc_ptz_ctrl_para* para) {
    return Called(__func__, id, channel, Hex{code}, para).vexo_model_send_ptz_cmd(id, channel, code, para);
}
int vexo_model_reboot(unsigned int id, VEXO_BOOL forced) {
    return Called(__func__, id, forced).vexo_model_reboot(id, forced);
}
int vexo_model_poweroff(unsigned int id) {
    return Called(__func__, id).vexo_model_poweroff(id);
}
int vexo_model_restore_factory(unsigned int id, unsigned int parts) {
    return Called(__func__, id, Hex{parts}).vexo_model_restore_factory(id, parts);
}
int vexo_model_set_record_mode(unsigned int id, unsigned int channel, unsigned int mode) {
    return Called(__func__, id, channel, mode).vexo_model_set_record_mode(id, channel, mode);
}
int vexo_model_set_record_manual_enable(unsigned int id, unsigned int channel, VEXO_BOOL enable) {
    return Called(__func__, id, channel, enable).vexo_model_set_record_manual_enable(id, channel, enable);
}
int vexo_model_capture(unsigned int id, unsigned int channel, const char* path, unsigned int* size) {
    return Called(__func__, id, channel, path).vexo_model_capture(id, channel, path, size);
}
int vexo_model_capture(unsigned int id, unsigned int channel, char* buffer, unsigned int buffer_size,
                       unsigned int* size) {
    return Called(__func__, id, channel, buffer_size).vexo_model_capture(id, channel, buffer, buffer_size, size);
}
int vexo_model_get_hard_disk_num(unsigned int* num) {
    return Called(__func__).vexo_model_get_hard_disk_num(num);
}
int vexo_model_get_hard_disk_info(unsigned int index, vexo_hard_disk_info* info) {
    return Called(__func__, index).vexo_model_get_hard_disk_info(index, info);
}
VEXO_BOOL vexo_model_is_disk_recording(const vexo_disk_identity* disk) {
    return Called(__func__, static_cast<const char*>(disk->name)).vexo_model_is_disk_recording(disk);
}
int vexo_model_get_ipc_connect_status(unsigned int channel, VEXO_BOOL* connected) {
    return Called(__func__, channel).vexo_model_get_ipc_connect_status(channel, connected);
}
int vexo_model_get_ipc_connect_cfg(unsigned int channel, vexo_ipc_connect_cfg* cfg) {
    return Called(__func__, channel).vexo_model_get_ipc_connect_cfg(channel, cfg);
}
VEXO_BOOL vexo_model_ch_is_recording(unsigned int channel) {
    return Called(__func__, channel).vexo_model_ch_is_recording(channel);
}
int vexo_model_get_audio_enable(unsigned int channel, unsigned int stream, VEXO_BOOL* enable, unsigned int reserved) {
    return Called(__func__, channel, stream, reserved).vexo_model_get_audio_enable(channel, stream, enable, reserved);
}
int vexo_model_get_enc_para(unsigned int channel, unsigned int stream, vexo_enc_para* para, VEXO_BOOL audio) {
    return Called(__func__, channel, stream, audio).vexo_model_get_enc_para(channel, stream, para, audio);
}
const vexo_dev_capability* vexo_model_get_dev_capability() {
    return Called(__func__).vexo_model_get_dev_capability();
}
int vexo_model_get_sata_info(vexo_sata_info* info) {
    return Called(__func__).vexo_model_get_sata_info(info);
}
int vexo_model_get_rec_stream_mode(unsigned int* mode) {
    return Called(__func__).vexo_model_get_rec_stream_mode(mode);
}
int vexo_model_get_default_if(char* name, unsigned int len) {
    return Called(__func__, len).vexo_model_get_default_if(name, len);
}
int vexo_model_get_pppoe_status(vexo_pppoe_status* status) {
    return Called(__func__).vexo_model_get_pppoe_status(status);
}
int vexo_model_get_host_manage_factory_info_num(unsigned int* num) {
    return Called(__func__).vexo_model_get_host_manage_factory_info_num(num);
}
int vexo_model_get_host_manager_factory_info(unsigned int index, vexo_hostlib_factory_info* info) {
    return Called(__func__, index).vexo_model_get_host_manager_factory_info(index, info);
}
int vexo_model_set_host_manager_factory_info_force(vexo_hostlib_factory_info info) {
    return Called(__func__, FieldText(info.name, sizeof(info.name)))
        .vexo_model_set_host_manager_factory_info_force(info);
}
void vexo_model_set_log_hook(vexo_log_hook hook, void* user) {
    Called(__func__).vexo_model_set_log_hook(hook, user);
}

// ---- the C library
// --------------------------------------------------------------------------------------------------- The linker sends
// every call of it here.
extern "C" int __wrap_unlink(const char* path);
int __wrap_unlink(const char* path) {
    return Called("unlink", path).unlink(path);
}
