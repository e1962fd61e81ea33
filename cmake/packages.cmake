# The Debian packages, one for each component of the installation. scripts/make-packages builds
# them.

set(library_package libkeltrun2-${PROJECT_VERSION_MAJOR})
set(development_package libkeltrun2-dev)
set(program_package keltrun2)
set(python_package python3-keltrun2)

set(packaged library development program)
if(KELTRUN2_BUILD_PYTHON)
  list(APPEND packaged python)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME keltrun2)
set(CPACK_PACKAGE_VENDOR "The Keltrun2 developers")
set(CPACK_PACKAGE_CONTACT "The Keltrun2 developers <keltrun2@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES TRUE)
set(CPACK_COMPONENTS_ALL ${packaged})
set(CPACK_DEB_COMPONENT_INSTALL TRUE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS TRUE)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS TRUE)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)

set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "shared library and its resource texts")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS "fonts-ipafont-gothic | fonts-japanese-gothic")
# Tells packages of programs that use the library which package to depend on.
file(WRITE ${PROJECT_BINARY_DIR}/control/shlibs
  "libkeltrun2 ${PROJECT_VERSION_MAJOR} ${library_package} (>= ${PROJECT_VERSION})\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/control/shlibs)

set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "headers, CMake and pkg-config files")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)

set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "command line")
set(CPACK_COMPONENT_PROGRAM_DEPENDS library)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION science)

set(CPACK_COMPONENT_PYTHON_DESCRIPTION "Python module")
set(CPACK_COMPONENT_PYTHON_DEPENDS library)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
# The module works only with the minor version of Python that it was compiled for.
if(KELTRUN2_BUILD_PYTHON)
  find_package(Python COMPONENTS Interpreter REQUIRED)
  math(EXPR next_minor "${Python_VERSION_MINOR} + 1")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= ${Python_VERSION_MAJOR}.${Python_VERSION_MINOR}~), python3 (<< ${Python_VERSION_MAJOR}.${next_minor})")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/cmake/debian/postinst;${PROJECT_SOURCE_DIR}/cmake/debian/prerm)
endif()

foreach(component IN LISTS packaged)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${${component}_package})
  install(FILES ${PROJECT_SOURCE_DIR}/LICENSE RENAME copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${${component}_package} COMPONENT ${component})
endforeach()

include(CPack)
