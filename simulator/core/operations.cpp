#include "core/operations.h"

#include <algorithm>

#include "core/nearest.h"

namespace simulator {

// Taking a lock for certain, giving anything back and asking for a truth value cannot fail and are not here.
const std::vector<std::string>& FallibleOperations() {
    static const std::vector<std::string>& operations = *new std::vector<std::string>{
        "vexo_utility_init",
        "vexo_utility_malloc",
        "vexo_utility_new_lock",
        "vexo_utility_new_rw_lock",
        "vexo_lock::rd_trylock",
        "vexo_rw_lock::rd_trylock",
        "vexo_utility_creat_thread",
        "vexo_utility_retrieve_thread",
        "vexo_utility_vexo_to_linux_time",
        "vexo_utility_creat_dir",
        "vexo_utility_delete_dir",
        "vexo_utility_new_xml_operate",
        "vexo_xml_operate::load_file",
        "vexo_xml_operate::load_content",
        "vexo_xml_operate::save_content",
        "vexo_xml_operate::export_content",
        "vexo_xml_operate::get_content_size",
        "vexo_xml_operate::get_attribute",
        "vexo_xml_operate::set_attribute",
        "vexo_xml_operate::get_child_name",
        "vexo_utility_get_event_info",
        "vexo_utility_regist_diag",

        "vexo_cfgm_init",
        "vexo_cfgm_get_dev_cap",
        "vexo_cfgm_get_usr_num",
        "vexo_cfgm_get_usr_info",
        "vexo_cfgm_get_host_manager_enable",
        "vexo_cfgm_get_host_manager_param",
        "vexo_cfgm_get_network_cap",
        "vexo_cfgm_get_local_eth_cfg",
        "vexo_cfgm_get_dns_cfg",
        "vexo_cfgm_get_upnp_cfg_ex",
        "vexo_cfgm_get_http_port",
        "vexo_cfgm_get_https_port",
        "vexo_cfgm_get_onvif_port",
        "vexo_cfgm_get_rtmp_port",
        "vexo_cfgm_get_rtsp_port",
        "vexo_cfgm_get_pppoe_cfg",

        "vexo_model_get_usr_info_byname",
        "vexo_model_login",
        "vexo_model_remote_login",
        "vexo_model_logout",
        "vexo_model_get_usr_authority",
        "vexo_model_first_get_frame",
        "vexo_model_get_frame",
        "vexo_model_rel_frame",
        "vexo_model_zero_channel_set_enable",
        "vexo_model_zero_channel_set_video_channels",
        "vexo_model_zero_channel_first_get_frame",
        "vexo_model_zero_channel_get_frame",
        "vexo_model_zero_channel_rel_frame",
        "vexo_model_zero_channel_get_resolution_ability",
        "vexo_model_zero_channel_get_resolution",
        "vexo_model_zero_channel_get_bps",
        "vexo_model_zero_channel_get_fps",
        "vexo_model_inquiry_rec_by_time",
        "vexo_model_new_avss_reader",
        "vexo_avss_file_reader::open",
        "vexo_avss_file_reader::set_frame_mode",
        "vexo_avss_file_reader::set_stream_type",
        "vexo_avss_file_reader::set_direction",
        "vexo_avss_file_reader::seek",
        "vexo_avss_file_reader::read_frame",
        "vexo_avss_file_reader::release_frame",
        "vexo_avss_file_reader::set_time_range",
        "vexo_avss_file_reader::close",
        "vexo_avss_file_reader::start",
        "vexo_model_new_advance_avss_reader",
        "vexo_advance_avss_file_reader::add_reader",
        "vexo_advance_avss_file_reader::remove_reader",
        "vexo_advance_avss_file_reader::seek",
        "vexo_advance_avss_file_reader::set_callback",
        "vexo_advance_avss_file_reader::start",
        "vexo_advance_avss_file_reader::stop",
        "vexo_advance_avss_file_reader::set_param",
        "vexo_model_start_talking",
        "vexo_model_stop_talking",
        "vexo_model_get_talking_frame",
        "vexo_model_play_talking_frame",
        "vexo_model_send_ptz_cmd",
        "vexo_model_reboot",
        "vexo_model_poweroff",
        "vexo_model_restore_factory",
        "vexo_model_set_record_mode",
        "vexo_model_set_record_manual_enable",
        "vexo_model_capture",
        "vexo_model_get_hard_disk_num",
        "vexo_model_get_hard_disk_info",
        "vexo_model_get_ipc_connect_status",
        "vexo_model_get_ipc_connect_cfg",
        "vexo_model_get_audio_enable",
        "vexo_model_get_enc_para",
        "vexo_model_get_dev_capability",
        "vexo_model_get_sata_info",
        "vexo_model_get_rec_stream_mode",
        "vexo_model_get_default_if",
        "vexo_model_get_pppoe_status",
        "vexo_model_get_host_manage_factory_info_num",
        "vexo_model_get_host_manager_factory_info",
        "vexo_model_set_host_manager_factory_info_force",
    };
    return operations;
}

std::string WhyNoOperation(const std::string& operation) {
    const std::vector<std::string>& known = FallibleOperations();
    if (std::find(known.begin(), known.end(), operation) != known.end()) {
        return "";
    }
    return "\"" + operation + "\" is no operation that can be told to fail; the nearest one is \"" +
           Nearest(operation, known) + "\"";
}

}  // namespace simulator
