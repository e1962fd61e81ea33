# Puts the parts of the page together: the engine ENGINE.js and ENGINE.wasm, the modules and styles of
# this folder and of the report, and the notices of the works of others that are in it.
set(here ${CMAKE_CURRENT_LIST_DIR})
set(report ${here}/../report_page)
include(${report}/join_modules.cmake)

# --- the worker: what the compiler made, and the modules that use it ---

file(READ "${ENGINE}.js" compiled)
join_modules("${here}/engine.js;${here}/worker.js" worker)
string(PREPEND worker "${compiled}\n")
if(worker MATCHES "</script|<!--")
  message(FATAL_ERROR "the script of the worker would end the element that holds it")
endif()
execute_process(COMMAND zopfli -c "${ENGINE}.wasm" COMMAND base64 -w 0  # packs better than gzip
  OUTPUT_VARIABLE engine COMMAND_ERROR_IS_FATAL ANY)

# --- the page ---

# The report's script and style stand by themselves, because they are also what saved reports get.
join_report("${report}" report_script report_style)
set(files texts_web_en.js texts_web_ja.js texts_web.js zip.js save.js remarks.js views_web.js library.js
  page.js)
list(TRANSFORM files PREPEND "${here}/")
join_modules("${files}" script)
file(READ "${here}/page.css" style)
dense("${style}" style)
foreach(part report_script report_style script style)
  hash_source("${${part}}" ${part}_hash)
endforeach()

# --- the notices ---

file(READ "${LIBXML2}/Copyright" libxml2_notice)
file(READ "${ZLIB}/zlib.h" zlib_notice)
string(REGEX MATCH "Copyright.*jloup@[^ ]+ +madler@[^ \n]+" zlib_notice "${zlib_notice}")
file(READ "${EMSCRIPTEN}/system/lib/libc/musl/COPYRIGHT" musl_notice)
string(REGEX REPLACE "\nAuthors/contributors include:.*" "" musl_notice "${musl_notice}")
set(notices "
libxml2: ${libxml2_notice}
zlib: ${zlib_notice}
musl: ${musl_notice}
libc++, libc++abi, libunwind: Apache License 2.0 with LLVM Exceptions, https://llvm.org/LICENSE.txt
Eigen: Mozilla Public License 2.0, https://mozilla.org/MPL/2.0; its source is https://eigen.tuxfamily.org
Emscripten: MIT License, Copyright (c) 2010-2014 Emscripten authors
")
string(REPLACE "--" "- -" notices "${notices}")

file(READ "${here}/page.html" page)
set(version ${VERSION})
foreach(gap version notices report_style_hash report_script_hash style_hash script_hash report_style
    style worker engine report_script script)
  string(REPLACE "{${gap}}" "${${gap}}" page "${page}")
endforeach()
file(WRITE "${OUTPUT}" "${page}")
