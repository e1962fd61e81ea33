#include "keltrun2/model/process_state.h"

#include <mutex>
#include <utility>
#include <vector>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/config/settings.h"
#include "keltrun2/model/event_model.h"

namespace keltrun {

// The state shared by all roots that one thread created. It is thread-safe, because threads without
// a root of their own use the state of another thread.
struct RootState {
  std::atomic<std::int32_t> serial_counter = 0;
  std::atomic<bool> operation_running = false;
  std::mutex mutex;
  std::string error_text;
};

namespace {

using StatePointer = std::shared_ptr<RootState>;

struct Root {
  std::weak_ptr<EventModel> model;
  StatePointer state;  // of the thread that created it
};

// The roots of the process, in the order of their creation.
struct Roots {
  std::mutex mutex;
  std::vector<Root> list;
  const StatePointer nobodys = std::make_shared<RootState>();  // used while there is no root at all
};

Roots& AllRoots() {
  static Roots roots;
  return roots;
}

// Set by the first root that the thread creates, and kept after its roots are destroyed: the thread
// then has no root, instead of using one of another thread.
StatePointer& OwnState() {
  thread_local StatePointer state;
  return state;
}

struct Found {
  std::shared_ptr<EventModel> model;
  StatePointer state;
};

Found FindRoot() {
  Roots& roots = AllRoots();
  const StatePointer& own = OwnState();
  const std::lock_guard lock(roots.mutex);
  for (auto root = roots.list.rbegin(); root != roots.list.rend(); ++root) {
    if (own && root->state != own) continue;
    if (auto model = root->model.lock()) return {std::move(model), root->state};
  }
  return {nullptr, own ? own : roots.nobodys};
}

StatePointer State() { return OwnState() ? OwnState() : FindRoot().state; }

}  // namespace

std::int32_t NextSerialNumber() { return ++State()->serial_counter; }
void ResetSerialNumbers() { State()->serial_counter = 0; }

std::string ErrorText() {
  const StatePointer state = State();
  const std::lock_guard lock(state->mutex);
  return state->error_text;
}

void SetErrorText(std::string text) {
  const StatePointer state = State();
  const std::lock_guard lock(state->mutex);
  state->error_text = std::move(text);
}

std::string FailureText(std::string_view message_key, std::string_view operation,
                        std::string_view description) {
  return ResourceText(message_key) + "\r\n" + std::string(operation) + "\r\n" +
         std::string(description);
}

std::string FailureReason(std::string_view error_text) {
  const std::size_t operation = error_text.find("\r\ncls");
  if (operation == std::string_view::npos) return std::string(error_text);
  const std::size_t reason = error_text.find("\r\n", operation + 2);
  return std::string(reason == std::string_view::npos ? error_text.substr(0, operation)
                                                      : error_text.substr(reason + 2));
}

std::shared_ptr<std::atomic<bool>> OperationFlag() {
  StatePointer state = State();
  std::atomic<bool>* const flag = &state->operation_running;
  return {std::move(state), flag};
}

std::shared_ptr<EventModel> FindCurrentModel() { return FindRoot().model; }

std::shared_ptr<EventModel> CurrentModel(std::string_view member) {
  if (auto model = FindCurrentModel()) return model;
  throw AutomationError(KR_ERROR_OBJECT_NOT_SET,
                        std::string(member) +
                            ": there is no event to work on, because this thread has no root "
                            "object (clsKeltrun2); create one and keep it");
}

std::function<void()> StateSharing() {
  return [state = State()] { OwnState() = state; };
}

void SetCurrentModel(const std::shared_ptr<EventModel>& model) {
  StatePointer& own = OwnState();
  if (!own) own = std::make_shared<RootState>();
  Roots& roots = AllRoots();
  const std::lock_guard lock(roots.mutex);
  std::erase_if(roots.list, [](const Root& root) { return root.model.expired(); });
  roots.list.push_back({model, own});
}

OwnRoots::OwnRoots() : state_(std::make_shared<RootState>()) {}

UseOwnRoots::UseOwnRoots(const OwnRoots& roots)
    : before_(std::exchange(OwnState(), roots.state_)) {}

UseOwnRoots::~UseOwnRoots() { OwnState() = std::move(before_); }

}  // namespace keltrun
