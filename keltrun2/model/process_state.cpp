#include "keltrun2/model/process_state.h"

#include <utility>

#include "keltrun2/model/event_model.h"

namespace keltrun {
namespace {

struct ProcessState {
  std::int32_t serial_counter = 0;
  std::string error_text;
  std::weak_ptr<EventModel> current;
};

ProcessState& State() {
  static ProcessState state;
  return state;
}

}  // namespace

std::int32_t NextSerialNumber() { return ++State().serial_counter; }
void ResetSerialNumbers() { State().serial_counter = 0; }

const std::string& ErrorText() { return State().error_text; }
void SetErrorText(std::string text) { State().error_text = std::move(text); }

std::shared_ptr<EventModel> CurrentModel() {
  auto model = State().current.lock();
  return model ? model : std::make_shared<EventModel>();
}

void SetCurrentModel(const std::shared_ptr<EventModel>& model) { State().current = model; }

}  // namespace keltrun
