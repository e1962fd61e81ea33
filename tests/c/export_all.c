/* export_all FOLDER FILE ...: opens each file with the C interface and writes every form of export
 * into FOLDER/NUMBER-FORM-INDEX, or the error text into FOLDER/NUMBER-FORM-error. The forms of one
 * set are those of the first class. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "keltrun2/c/keltrun2.h"

static void write_file(const char* folder, int number, const char* form, const char* what,
                       const void* bytes, size_t size) {
  char name[4096];
  FILE* file = NULL;
  snprintf(name, sizeof name, "%s/%d-%s-%s", folder, number, form, what);
  file = fopen(name, "wb");
  if (file == NULL || fwrite(bytes, 1, size, file) != size || fclose(file) != 0) {
    perror(name);
    exit(1);
  }
}

static void export_form(keltrun2_event* event, const char* folder, int number, const char* form) {
  keltrun2_output* output = NULL;
  size_t index = 0;
  if (keltrun2_export(event, form, &output) != KELTRUN2_OK) {
    const char* error = keltrun2_last_error(event);
    write_file(folder, number, form, "error", error, strlen(error));
    return;
  }
  for (index = 0; index < keltrun2_output_count(output); ++index) {
    char what[24];
    snprintf(what, sizeof what, "%u", (unsigned)index);
    write_file(folder, number, form, what, keltrun2_output_bytes(output, index),
               keltrun2_output_size(output, index));
  }
  keltrun2_output_free(output);
}

/* The forms of one set take the name of the first class of the event's JSON. */
static void choose_first_class(keltrun2_event* event) {
  static const char kBefore[] = "\"classes\":[";
  keltrun2_output* output = NULL;
  if (keltrun2_export(event, "info-json", &output) != KELTRUN2_OK) exit(1);
  const char* place = strstr(keltrun2_output_bytes(output, 0), kBefore);
  const char* name = place != NULL ? strstr(place, "\"name\":\"") : NULL;
  if (name != NULL) {
    char text[1024] = "";
    const char* end = strchr(name + 8, '"');
    if (end != NULL && (size_t)(end - name - 8) < sizeof text) {
      memcpy(text, name + 8, (size_t)(end - name - 8));
      keltrun2_set(event, "class", text);
    }
  }
  keltrun2_output_free(output);
}

static int is_of_one_set(const char* form) {
  static const char* const kForms[] = {"results-html", "analyze-html", "analyze-mail",
                                       "analyze-macro-csv", "analyze-splitsbrowser"};
  size_t i = 0;
  for (i = 0; i < sizeof kForms / sizeof *kForms; ++i) {
    if (strcmp(kForms[i], form) == 0) return 1;
  }
  return 0;
}

static void export_file(const char* folder, int number, const char* name) {
  FILE* file = fopen(name, "rb");
  keltrun2_event* event = keltrun2_event_new();
  const char* form = NULL;
  char* bytes = NULL;
  size_t size = 0;
  size_t index = 0;
  if (file == NULL || event == NULL || fseek(file, 0, SEEK_END) != 0) exit(1);
  size = (size_t)ftell(file);
  rewind(file);
  bytes = malloc(size + 1);
  if (bytes == NULL || fread(bytes, 1, size, file) != size) exit(1);
  fclose(file);
  if (keltrun2_open(event, name, bytes, size) != KELTRUN2_OK) {
    const char* error = keltrun2_last_error(event);
    write_file(folder, number, "open", "error", error, strlen(error));
  } else {
    for (index = 0; (form = keltrun2_forms(index)) != NULL; ++index) {
      if (is_of_one_set(form)) choose_first_class(event);
      export_form(event, folder, number, form);
      keltrun2_set(event, "class", "");
    }
  }
  keltrun2_event_free(event);
  free(bytes);
}

int main(int argc, char** argv) {
  int i = 0;
  if (argc < 3 || keltrun2_set_language("en") != KELTRUN2_OK) return 2;
  for (i = 2; i < argc; ++i) export_file(argv[1], i - 2, argv[i]);
  return 0;
}
