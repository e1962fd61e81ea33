/** @file
 * Keltrun2 for C and for every language that can call C.
 *
 *     keltrun2_event* event = keltrun2_event_new();
 *     keltrun2_output* report = NULL;
 *     if (keltrun2_open(event, "results.xml", bytes, size) != KELTRUN2_OK ||
 *         keltrun2_export(event, "report", &report) != KELTRUN2_OK) {
 *       fprintf(stderr, "%s\n", keltrun2_last_error(event));
 *     } else {
 *       fwrite(keltrun2_output_bytes(report, 0), 1, keltrun2_output_size(report, 0), file);
 *     }
 *     keltrun2_output_free(report);
 *     keltrun2_event_free(event);
 *
 * Texts are UTF-8 and end with a zero byte. Nothing here opens a file: files come as bytes and go
 * as bytes. No function lets a C++ exception out.
 *
 * Different events may be used by different threads at the same time; one event, with the outputs
 * made from it, is used by one thread at a time. A null event, output or text where one is needed
 * is wrong use, never a crash.
 */
#ifndef KELTRUN2_C_KELTRUN2_H_
#define KELTRUN2_C_KELTRUN2_H_

/* NOLINTBEGIN(modernize-*): this header is C */
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Marks a function that the shared library exports. */
#define KELTRUN2_C_API __attribute__((visibility("default")))

/** The version of this interface. It grows when functions, forms or options are added; what is
 * there keeps its meaning until the major version of the library changes. */
#define KELTRUN2_C_VERSION 1

/** What a function says of its work. */
typedef enum keltrun2_status {
  KELTRUN2_OK = 0,        /**< Done. */
  KELTRUN2_WRONG_USE = 1, /**< A null argument, or a name or value that does not exist. */
  KELTRUN2_FAILED = 2,    /**< The file or the event does not allow it; the error text says why. */
  KELTRUN2_NO_MEMORY = 3  /**< There is not enough memory. */
} keltrun2_status;

/** An event with its options. */
typedef struct keltrun2_event keltrun2_event;

/** The files that an export made, nearly always one. It does not depend on the event any more. */
typedef struct keltrun2_output keltrun2_output;

/** Called with 0 to 100 while a file is loaded, on the thread that loads it. It must not use the
 * event. */
typedef void (*keltrun2_progress)(int32_t percent, void* data);

/** KELTRUN2_C_VERSION of the library that runs. */
KELTRUN2_C_API int32_t keltrun2_c_version(void);

/** The version of the library with its build, as in "2.27 ( Build 242 )"; valid for ever. */
KELTRUN2_C_API const char* keltrun2_version(void);

/** Chooses the language of pages and texts for the whole process, "ja" or "en", before the first
 * event is made. Later calls, and other languages, are wrong use. Without it the settings and the
 * environment decide. */
KELTRUN2_C_API keltrun2_status keltrun2_set_language(const char* language);

/** Makes an empty event with the initial options; null when there is not enough memory. */
KELTRUN2_C_API keltrun2_event* keltrun2_event_new(void);

/** Frees an event. Null is ignored; outputs made from it stay valid. */
KELTRUN2_C_API void keltrun2_event_free(keltrun2_event* event);

/** Why the last function that got this event did not return KELTRUN2_OK: one sentence or several
 * lines, in English or the language of the texts; empty after success. With null: the same for
 * keltrun2_set_language and for calls without an event, in this thread. Valid until the next call
 * with the event. Never null. */
KELTRUN2_C_API const char* keltrun2_last_error(const keltrun2_event* event);

/** Sets an option for the calls that follow. They have the names of the program's options:
 *
 * | option | values | initially |
 * |---|---|---|
 * | input-format | a short name of a format, as keltrun2_input_formats lists them | detected |
 * | input-charset | "utf-8", "cp932", "windows-1252" ...: of texts that do not say it | detected |
 * | race | which race or day of a file with several, from 1 | the first with results |
 * | member | the lap file of an archive with several | an error lists them |
 * | match | by what merging recognizes a runner: "name", "id", "none" | name |
 * | prefer | whether merging keeps "old" values or takes "new" ones | old |
 * | known-only | "yes": merging adds no runners | no |
 * | renew-ranks | "no": merging leaves official ranks as they are | yes |
 * | untimed | legs that analyses leave out: "auto", "none", or numbers, "8,15" | auto |
 * | class, course, segment | the set to export: a name, a number, a name | every one |
 * | charset | of exported texts and tables: "utf-8", "utf-8-bom", "cp932" ... | the form's |
 * | delimiter | of tables: "," ";" "|" or "tab" | , |
 * | splits | "yes": the result table has the times at the controls | no |
 * | full | "yes": native files keep fixed ranks and ages | no |
 *
 * A null or empty value brings back the initial one. class, course and segment exclude each other:
 * the one that was set last counts. */
KELTRUN2_C_API keltrun2_status keltrun2_set(keltrun2_event* event, const char* option,
                                            const char* value);

/** The short names of the formats that can be read, one after the other, from index 0 on; null
 * beyond the last. Valid for ever. */
KELTRUN2_C_API const char* keltrun2_input_formats(size_t index);

/** Sets the function that follows loads and the pointer that it gets; null for none. */
KELTRUN2_C_API void keltrun2_on_progress(keltrun2_event* event, keltrun2_progress progress,
                                         void* data);

/** Opens a file of any format that the library reads in place of what the event had. The name, with
 * or without folders, is used for detection and in messages. If the file cannot be read, the event
 * stays as it was. The bytes may be freed afterwards. */
KELTRUN2_C_API keltrun2_status keltrun2_open(keltrun2_event* event, const char* name,
                                             const void* bytes, size_t size);

/** Adds a file to the event, as the options match, prefer and known-only say. What was read before
 * an error stays in the event. */
KELTRUN2_C_API keltrun2_status keltrun2_merge(keltrun2_event* event, const char* name,
                                              const void* bytes, size_t size);

/** Corrects the clock of a control: adds seconds, which may be negative, to every punch there.
 * *changed, unless changed is null, gets the number of runners who changed. */
KELTRUN2_C_API keltrun2_status keltrun2_shift_clock(keltrun2_event* event, int32_t control,
                                                    double seconds, int32_t* changed);

/** The names of the forms of export, one after the other, from index 0 on; null beyond the last.
 * Valid for ever. They have the program's words: those of `convert --to` ("lxm", "lap", "iof3",
 * "iof2", "iof2-plain", "splitsbrowser", "winsplits", "oe2010"), those of `results` and `analyze`
 * with their `--as` ("results-csv", "analyze-json" ...), "report", "site" with several files,
 * "info-json", and two of their own: "remarks-json", what the last open, merge or export of a lap
 * file noticed and what is odd about the times, and "report-data", the data of the report for a
 * page of the same version. docs/guide.md describes them. */
KELTRUN2_C_API const char* keltrun2_forms(size_t index);

/** Exports the event, or the set that the options name, in a form. *output gets the files, which
 * the caller frees; null on failure. Forms of one set ("analyze-html" ...) fail when the event has
 * several and the options name none. */
KELTRUN2_C_API keltrun2_status keltrun2_export(keltrun2_event* event, const char* form,
                                               keltrun2_output** output);

/** The number of files; 0 for null. */
KELTRUN2_C_API size_t keltrun2_output_count(const keltrun2_output* output);

/** A good name for a file, without a folder; null beyond the last. Valid as long as the output. */
KELTRUN2_C_API const char* keltrun2_output_name(const keltrun2_output* output, size_t index);

/** The bytes of a file; null beyond the last. A zero byte, which is not counted, follows them, so
 * that texts can be used as they are. Valid as long as the output. */
KELTRUN2_C_API const void* keltrun2_output_bytes(const keltrun2_output* output, size_t index);

/** The number of bytes of a file; 0 beyond the last. */
KELTRUN2_C_API size_t keltrun2_output_size(const keltrun2_output* output, size_t index);

/** Frees an output. Null is ignored. */
KELTRUN2_C_API void keltrun2_output_free(keltrun2_output* output);

#ifdef __cplusplus
}
#endif
/* NOLINTEND(modernize-*) */

#endif
