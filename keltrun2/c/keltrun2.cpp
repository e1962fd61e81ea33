#include "keltrun2/c/keltrun2.h"

#include <exception>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "keltrun2/base/automation_error.h"
#include "keltrun2/base/version.h"
#include "keltrun2/c/event.h"
#include "keltrun2/c/forms.h"
#include "keltrun2/config/startup.h"
#include "keltrun2/io/lap_file_types.h"

struct keltrun2_event {
  keltrun::c::Event event;
  std::string error;
};

struct keltrun2_output {
  std::vector<keltrun::c::OutputFile> files;
};

namespace keltrun::c {
namespace {

constexpr std::int32_t kLocaleJapan = 1041;
constexpr std::int32_t kLocaleUsa = 1033;

// The error text of calls without an event.
std::string& ErrorOfThread() {
  thread_local std::string error;
  return error;
}

// Keeps an error text; without memory for it, an empty one.
void Keep(std::string& error, const char* text) noexcept {
  try {
    error = text;
  } catch (...) {
    error.clear();
  }
}

// Calls a function and turns what it throws into a status and an error text.
template <typename Function>
keltrun2_status Guarded(std::string& error, Function function) noexcept {
  try {
    error.clear();
    function();
    return KELTRUN2_OK;
  } catch (const Failure& failure) {
    Keep(error, failure.what());
    return KELTRUN2_FAILED;
  } catch (const std::bad_alloc&) {
    Keep(error, "there is not enough memory");
    return KELTRUN2_NO_MEMORY;
  } catch (const AutomationError& wrong) {
    Keep(error, wrong.what());
    return KELTRUN2_WRONG_USE;
  } catch (const std::exception& fault) {
    Keep(error, fault.what());
    return KELTRUN2_FAILED;
  } catch (...) {
    Keep(error, "an unknown error");
    return KELTRUN2_FAILED;
  }
}

[[noreturn]] void RefuseNull(const char* what) {
  throw AutomationError(KR_ERROR_OBJECT_NOT_SET, std::string(what) + " is null");
}

void CheckText(const char* text, const char* what) {
  if (text == nullptr) RefuseNull(what);
}

// Calls a function with the event, on which this thread then works.
template <typename Function>
keltrun2_status WithEvent(keltrun2_event* event, Function function) noexcept {
  if (event == nullptr) {
    Keep(ErrorOfThread(), "the event is null");
    return KELTRUN2_WRONG_USE;
  }
  return Guarded(event->error, [&] {
    const UseOwnRoots use = event->event.Use();
    function(event->event);
  });
}

std::string_view Bytes(const void* bytes, std::size_t size) {
  if (bytes == nullptr && size > 0) RefuseNull("bytes");
  return size == 0 ? std::string_view("") : std::string_view(static_cast<const char*>(bytes), size);
}

const OutputFile* FileAt(const keltrun2_output* output, std::size_t index) {
  return output != nullptr && index < output->files.size() ? &output->files[index] : nullptr;
}

std::string VersionWithBuild() { return VersionText(true); }

// What a function makes, once for the whole process; null when there is not enough memory.
template <auto Make>
const decltype(Make())* MadeOnce() noexcept {
  try {
    static const auto made = Make();
    return &made;
  } catch (...) {
    return nullptr;
  }
}

}  // namespace
}  // namespace keltrun::c

using namespace keltrun;  // NOLINT(google-build-using-namespace): names that begin with keltrun2_
using namespace keltrun::c;  // NOLINT(google-build-using-namespace)

int32_t keltrun2_c_version(void) { return KELTRUN2_C_VERSION; }

const char* keltrun2_version(void) {
  const auto* const version = MadeOnce<VersionWithBuild>();
  return version == nullptr ? "" : version->c_str();
}

keltrun2_status keltrun2_set_language(const char* language) {
  return Guarded(ErrorOfThread(), [&] {
    CheckText(language, "the language");
    const std::string_view wanted = language;
    if (wanted != "ja" && wanted != "en") {
      throw AutomationError(KR_ERROR_INVALID_CALL,
                            "the language \"" + std::string(wanted) + "\" is not ja or en");
    }
    Startup startup;
    startup.Language = language;
    startup.Locale = wanted == "ja" ? kLocaleJapan : kLocaleUsa;
    SetStartup(startup);
  });
}

keltrun2_event* keltrun2_event_new(void) {
  keltrun2_event* event = nullptr;
  Guarded(ErrorOfThread(), [&] { event = new keltrun2_event; });
  return event;
}

void keltrun2_event_free(keltrun2_event* event) {
  if (event == nullptr) return;
  Guarded(ErrorOfThread(), [&] { delete event; });
}

const char* keltrun2_last_error(const keltrun2_event* event) {
  return (event != nullptr ? event->error : ErrorOfThread()).c_str();
}

keltrun2_status keltrun2_set(keltrun2_event* event, const char* option, const char* value) {
  return WithEvent(event, [&](Event& own) {
    CheckText(option, "the option");
    SetOption(own.Options, option, value == nullptr ? "" : value);
  });
}

const char* keltrun2_input_formats(size_t index) {
  const auto* const words = MadeOnce<LapFileTypeWords>();
  return words != nullptr && index < words->size() ? (*words)[index].c_str() : nullptr;
}

void keltrun2_on_progress(keltrun2_event* event, keltrun2_progress progress, void* data) {
  WithEvent(event, [&](Event& own) {
    own.Progress = nullptr;
    if (progress == nullptr) return;
    own.Progress = [progress, data](std::int32_t percent) { progress(percent, data); };
  });
}

keltrun2_status keltrun2_open(keltrun2_event* event, const char* name, const void* bytes,
                              size_t size) {
  return WithEvent(event, [&](Event& own) {
    CheckText(name, "the name");
    own.Open(name, Bytes(bytes, size));
  });
}

keltrun2_status keltrun2_merge(keltrun2_event* event, const char* name, const void* bytes,
                               size_t size) {
  return WithEvent(event, [&](Event& own) {
    CheckText(name, "the name");
    own.Merge(name, Bytes(bytes, size));
  });
}

keltrun2_status keltrun2_shift_clock(keltrun2_event* event, int32_t control, double seconds,
                                     int32_t* changed) {
  return WithEvent(event, [&](Event& own) {
    const std::int32_t count = own.Root().ShiftClock(control, seconds);
    if (changed != nullptr) *changed = count;
  });
}

const char* keltrun2_forms(size_t index) { return FormName(index); }

keltrun2_status keltrun2_export(keltrun2_event* event, const char* form, keltrun2_output** output) {
  if (output != nullptr) *output = nullptr;
  return WithEvent(event, [&](Event& own) {
    CheckText(form, "the form");
    if (output == nullptr) RefuseNull("the place for the output");
    *output = new keltrun2_output{Export(own, form)};
  });
}

size_t keltrun2_output_count(const keltrun2_output* output) {
  return output == nullptr ? 0 : output->files.size();
}

const char* keltrun2_output_name(const keltrun2_output* output, size_t index) {
  const OutputFile* const file = FileAt(output, index);
  return file == nullptr ? nullptr : file->name.c_str();
}

const void* keltrun2_output_bytes(const keltrun2_output* output, size_t index) {
  const OutputFile* const file = FileAt(output, index);
  return file == nullptr ? nullptr : file->bytes.c_str();
}

size_t keltrun2_output_size(const keltrun2_output* output, size_t index) {
  const OutputFile* const file = FileAt(output, index);
  return file == nullptr ? 0 : file->bytes.size();
}

void keltrun2_output_free(keltrun2_output* output) { delete output; }
