// Lists of recordings that the guest has asked for and not given back. How they are found is the archive's.
#ifndef SIMULATOR_MODEL_INQUIRY_H
#define SIMULATOR_MODEL_INQUIRY_H

#include <optional>
#include <vector>

#include "archive.h"
#include "vexo_model.h"

namespace simulator {

/** Hands the files out as a list; label: for the guest watch. */
vexo_rec_file_inquiry_result* HandOut(unsigned channel, std::vector<RecordedFile> files, const std::string& label);

/** Takes a list back; false, with a complaint, when it is not out. */
bool TakeBack(vexo_rec_file_inquiry_result* list);

/** The files of a list; nothing when it is not out. */
std::optional<std::vector<RecordedFile>> FilesOf(const vexo_rec_file_inquiry_result* list);

}  // namespace simulator

#endif
