// The part of the engine that C cannot say to JavaScript otherwise: how far a load is.
#include <emscripten.h>

#include "keltrun2/c/keltrun2.h"

// NOLINTBEGIN
EM_JS(void, tell_progress, (int percent), {
  if (Module['onProgress']) Module['onProgress'](percent);
});
// NOLINTEND

namespace {

void Tell(std::int32_t percent, void* /*data*/) { tell_progress(percent); }

}  // namespace

extern "C" EMSCRIPTEN_KEEPALIVE void keltrun2_web_tell_progress(keltrun2_event* event) {
  keltrun2_on_progress(event, Tell, nullptr);
}
