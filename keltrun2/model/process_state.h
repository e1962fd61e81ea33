// What all objects of one process share: the current model, the runner numbers, the error text.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace keltrun {

class EventModel;

/// Numbers the runner records in the order of arrival: the next number, from 1.
std::int32_t NextSerialNumber();
/// Starts the numbers again at 1.
void ResetSerialNumbers();

/// The component's error text: why the last operation of the file service failed.
const std::string& ErrorText();
void SetErrorText(std::string text);

/// The model of the root object created last; an empty model when that root is gone, never null.
std::shared_ptr<EventModel> CurrentModel();
/// Makes a model the current one. It is held weakly: its root keeps it alive.
void SetCurrentModel(const std::shared_ptr<EventModel>& model);

}  // namespace keltrun
