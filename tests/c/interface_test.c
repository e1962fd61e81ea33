/* The C interface from C99: what a host in another language meets. Usage: interface_test EVENT.
 * Ends with 1 and the place of the fault when something is wrong. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "keltrun2/c/keltrun2.h"

#define CHECK(condition)                                              \
  do {                                                                \
    if (!(condition)) {                                               \
      fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition); \
      exit(1);                                                        \
    }                                                                 \
  } while (0)

static char* read_file(const char* name, size_t* size) {
  FILE* file = fopen(name, "rb");
  char* bytes = NULL;
  CHECK(file != NULL && fseek(file, 0, SEEK_END) == 0);
  *size = (size_t)ftell(file);
  rewind(file);
  bytes = malloc(*size + 1);
  CHECK(bytes != NULL && fread(bytes, 1, *size, file) == *size);
  fclose(file);
  return bytes;
}

static void keep_percent(int32_t percent, void* data) { *(int32_t*)data = percent; }

static void open_and_export(const char* name) {
  size_t size = 0;
  char* bytes = read_file(name, &size);
  int32_t percent = -1;
  keltrun2_output* output = NULL;
  keltrun2_event* event = keltrun2_event_new();
  CHECK(event != NULL);
  keltrun2_on_progress(event, keep_percent, &percent);
  CHECK(keltrun2_open(event, name, bytes, size) == KELTRUN2_OK);
  free(bytes); /* the event keeps what it needs */
  CHECK(percent == 100);
  CHECK(strcmp(keltrun2_last_error(event), "") == 0);
  CHECK(keltrun2_set(event, "class", "M21A") == KELTRUN2_OK);
  CHECK(keltrun2_export(event, "analyze-json", &output) == KELTRUN2_OK);
  keltrun2_event_free(event); /* the output stays */
  CHECK(keltrun2_output_count(output) == 1);
  CHECK(strcmp(keltrun2_output_name(output, 0), "analysis.json") == 0);
  CHECK(strlen(keltrun2_output_bytes(output, 0)) == keltrun2_output_size(output, 0));
  CHECK(strstr(keltrun2_output_bytes(output, 0), "\"name\":\"M21A\"") != NULL);
  CHECK(keltrun2_output_bytes(output, 1) == NULL && keltrun2_output_name(output, 1) == NULL);
  CHECK(keltrun2_output_size(output, 1) == 0);
  keltrun2_output_free(output);
}

static void use_nulls(void) {
  keltrun2_output* output = (keltrun2_output*)&output;
  keltrun2_event* event = keltrun2_event_new();
  CHECK(keltrun2_open(NULL, "a.lxm", "", 0) == KELTRUN2_WRONG_USE);
  CHECK(strstr(keltrun2_last_error(NULL), "null") != NULL);
  CHECK(keltrun2_merge(event, NULL, "", 0) == KELTRUN2_WRONG_USE);
  CHECK(keltrun2_open(event, "a.lxm", NULL, 3) == KELTRUN2_WRONG_USE);
  CHECK(keltrun2_open(event, "a.lxm", NULL, 0) == KELTRUN2_FAILED);
  CHECK(keltrun2_export(NULL, "info-json", &output) == KELTRUN2_WRONG_USE && output == NULL);
  CHECK(keltrun2_export(event, NULL, &output) == KELTRUN2_WRONG_USE);
  CHECK(keltrun2_export(event, "info-json", NULL) == KELTRUN2_WRONG_USE);
  CHECK(keltrun2_set(event, NULL, "x") == KELTRUN2_WRONG_USE);
  CHECK(keltrun2_set(event, "race", NULL) == KELTRUN2_OK);
  CHECK(keltrun2_set_language(NULL) == KELTRUN2_WRONG_USE);
  CHECK(keltrun2_output_count(NULL) == 0 && keltrun2_output_bytes(NULL, 0) == NULL);
  keltrun2_on_progress(NULL, NULL, NULL);
  keltrun2_event_free(NULL);
  keltrun2_output_free(NULL);
  keltrun2_event_free(event);
}

int main(int argc, char** argv) {
  CHECK(argc == 2);
  CHECK(keltrun2_c_version() == KELTRUN2_C_VERSION);
  CHECK(strstr(keltrun2_version(), "2.") == keltrun2_version());
  CHECK(keltrun2_set_language("fr") == KELTRUN2_WRONG_USE);
  CHECK(keltrun2_set_language("en") == KELTRUN2_OK);
  open_and_export(argv[1]);
  use_nulls();
  CHECK(keltrun2_set_language("ja") == KELTRUN2_WRONG_USE); /* too late */
  return 0;
}
