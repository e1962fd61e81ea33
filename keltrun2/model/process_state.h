// What the objects of a thread share (the current model, the runner numbers, the error text) and
// what it takes of another thread when it has created no root object itself.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace keltrun {

class EventModel;

/// Numbers the runner records in the order of arrival: the next number, from 1.
std::int32_t NextSerialNumber();
/// Starts the numbers again at 1.
void ResetSerialNumbers();

/// The component's error text: why the last operation of the file service failed.
std::string ErrorText();
void SetErrorText(std::string text);

/// True while a load or an export runs. Whoever sets it keeps the pointer and takes it back.
std::shared_ptr<std::atomic<bool>> OperationFlag();

/// The model of the most recently created root object that still lives: of the roots that this
/// thread created, or of those of the whole process when it never created one. Null when there is
/// none.
std::shared_ptr<EventModel> FindCurrentModel();
/// The same, never null. Raises object not set (91), in the name of the member that needs it, when
/// there is no root object.
std::shared_ptr<EventModel> CurrentModel(std::string_view member = "clsKeltrun2");
/// Makes a model the current one of this thread. It is held weakly: its root keeps it alive.
void SetCurrentModel(const std::shared_ptr<EventModel>& model);

}  // namespace keltrun
