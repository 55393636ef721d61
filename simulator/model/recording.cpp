// Recordings: this storey of the recorder has none. The library ends readers and lists that it was never given here, so
// each of these calls is a guest's mistake.
#include "core/watch.h"
#include "vexo_model.h"

static void ComplainOfStranger(const char* what, const char* function) {
    simulator::Complain(std::string(what) + " given back in " + function + " was never handed out");
}

void vexo_model_free_inquiry_rec_result(vexo_rec_file_inquiry_result* /*result*/) {
    ComplainOfStranger("a list of recordings", "an unnamed function");
}

void vexo_model_delete_avss_reader(vexo_avss_file_reader* /*reader*/, const char* /*file*/, const char* function) {
    ComplainOfStranger("a reader", function);
}

void vexo_model_delete_advance_avss_reader(vexo_advance_avss_file_reader* /*reader*/, const char* /*file*/,
                                           const char* function) {
    ComplainOfStranger("an advance reader", function);
}
