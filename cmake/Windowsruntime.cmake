# Run by `cmake --install` (and so by cpack) in the Windows build: copies the
# DLLs that the programs import, directly or through another DLL, and that are
# found in TAVENA_DLL_FOLDERS (the cross compiler's runtime, Qt). What is not
# found there is Windows' own (kernel32.dll, msvcrt.dll ...) and stays out.
# In: TAVENA_WINDOWS_PROGRAMS, TAVENA_DLL_FOLDERS, TAVENA_OBJDUMP.
set(CMAKE_GET_RUNTIME_DEPENDENCIES_PLATFORM windows+pe)
set(CMAKE_GET_RUNTIME_DEPENDENCIES_TOOL objdump)
set(CMAKE_GET_RUNTIME_DEPENDENCIES_COMMAND "${TAVENA_OBJDUMP}")

file(GET_RUNTIME_DEPENDENCIES
  EXECUTABLES ${TAVENA_WINDOWS_PROGRAMS}
  DIRECTORIES ${TAVENA_DLL_FOLDERS}
  PRE_EXCLUDE_REGEXES "^api-ms-" "^ext-ms-"
  RESOLVED_DEPENDENCIES_VAR bundled
  UNRESOLVED_DEPENDENCIES_VAR from_windows
  CONFLICTING_DEPENDENCIES_PREFIX conflicting)

if(conflicting_FILENAMES)
  message(FATAL_ERROR "DLLs found in more than one folder: ${conflicting_FILENAMES}")
endif()
list(JOIN from_windows " " from_windows)
message(STATUS "DLLs left to Windows: ${from_windows}")
foreach(dll IN LISTS bundled)
  file(INSTALL "${dll}" DESTINATION "${CMAKE_INSTALL_PREFIX}")
endforeach()
