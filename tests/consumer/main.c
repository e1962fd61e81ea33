/* A host in C that only knows the installed library. Ends with 1 unless the file loads and its
 * report is made. */
#include <keltrun2/c/keltrun2.h>
#include <stdio.h>
#include <stdlib.h>

int main(int argc, char** argv) {
  keltrun2_event* event = keltrun2_event_new();
  keltrun2_output* report = NULL;
  const size_t most = 1 << 22;
  char* bytes = malloc(most);
  FILE* file = argc == 2 ? fopen(argv[1], "rb") : NULL;
  if (event == NULL || bytes == NULL || file == NULL) return 1;
  if (keltrun2_open(event, argv[1], bytes, fread(bytes, 1, most, file)) != KELTRUN2_OK ||
      keltrun2_export(event, "report", &report) != KELTRUN2_OK) {
    fprintf(stderr, "%s\n", keltrun2_last_error(event));
    return 1;
  }
  printf("%s %s\n", keltrun2_version(), keltrun2_output_name(report, 0));
  keltrun2_output_free(report);
  keltrun2_event_free(event);
  fclose(file);
  free(bytes);
  return 0;
}
