// The state that the objects of a thread share: the current model, the runner numbers and the error
// text. A thread that never created a root object uses the state of another thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace keltrun {

class EventModel;

/// The next number for a runner's record. Numbers start at 1.
std::int32_t NextSerialNumber();
/// Makes the numbers start at 1 again.
void ResetSerialNumbers();

/// The component's error text: why the last operation of the file service failed.
std::string ErrorText();
void SetErrorText(std::string text);

/// The error text of a failure in three lines: the message of a resource key, the operation, and
/// what happened.
std::string FailureText(std::string_view message_key, std::string_view operation,
                        std::string_view description);

/// The last line of such a text or, when it has no such lines, the text itself.
std::string FailureReason(std::string_view error_text);

/// A flag that is true while a load or an export runs. The operation that sets it keeps the pointer
/// and clears the flag at the end.
std::shared_ptr<std::atomic<bool>> OperationFlag();

/// The model of the most recently created root object that still exists, among the roots that this
/// thread created or, if it never created one, among all roots of the process. Null if there is
/// none.
std::shared_ptr<EventModel> FindCurrentModel();
/// The same, but never null. If there is no root object, raises object not set (91) with the name
/// of the member that needs it.
std::shared_ptr<EventModel> CurrentModel(std::string_view member = "clsKeltrun2");
/// A function for threads that work for this one and end before it goes on: the thread that calls
/// it shares the current model and the other state of this thread from then on.
std::function<void()> StateSharing();
/// Makes a model the current one of this thread. Only a weak reference is kept; the root object
/// keeps the model alive.
void SetCurrentModel(const std::shared_ptr<EventModel>& model);

/// The shared state of roots that belong to nobody's thread.
class OwnRoots {
 public:
  OwnRoots();

 private:
  friend class UseOwnRoots;
  std::shared_ptr<struct RootState> state_;
};

/// While it exists, the state takes the place of that of this thread: roots that are made now
/// belong to it, and they alone are found.
class UseOwnRoots {
 public:
  explicit UseOwnRoots(const OwnRoots& roots);
  ~UseOwnRoots();
  UseOwnRoots(const UseOwnRoots&) = delete;
  UseOwnRoots& operator=(const UseOwnRoots&) = delete;

 private:
  std::shared_ptr<struct RootState> before_;
};

}  // namespace keltrun
