# Run by `cmake --install` (and so by cpack) in the Windows build: copies the
# DLLs that the programs import, directly or through another DLL, and that are
# found in TAVENA_DLL_FOLDERS (the cross compiler's runtime, Qt). What is not
# found there is Windows' own (kernel32.dll, msvcrt.dll ...) and stays out.
# In: TAVENA_WINDOWS_PROGRAMS, TAVENA_DLL_FOLDERS, TAVENA_DLL_NAMES (a scratch
# folder), TAVENA_OBJDUMP, TAVENA_STRIP.
set(CMAKE_GET_RUNTIME_DEPENDENCIES_PLATFORM windows+pe)
set(CMAKE_GET_RUNTIME_DEPENDENCIES_TOOL objdump)
set(CMAKE_GET_RUNTIME_DEPENDENCIES_COMMAND "${TAVENA_OBJDUMP}")

# Windows names DLLs in any case (Qt6Core.dll) and the look-up asks for
# lower case: it searches a folder of lower-case links to them.
set(names "${TAVENA_DLL_NAMES}")
file(REMOVE_RECURSE "${names}")
file(MAKE_DIRECTORY "${names}")
foreach(folder IN LISTS TAVENA_DLL_FOLDERS)
  file(GLOB dlls "${folder}/*.dll")
  foreach(dll IN LISTS dlls)
    get_filename_component(name "${dll}" NAME)
    string(TOLOWER "${name}" name)
    if(NOT EXISTS "${names}/${name}")
      file(CREATE_LINK "${dll}" "${names}/${name}" SYMBOLIC)
    endif()
  endforeach()
endforeach()

file(GET_RUNTIME_DEPENDENCIES
  EXECUTABLES ${TAVENA_WINDOWS_PROGRAMS}
  DIRECTORIES "${names}"
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
  file(REAL_PATH "${dll}" file)
  file(INSTALL "${file}" DESTINATION "${CMAKE_INSTALL_PREFIX}")
  # Debian's DLLs keep their symbols (libstdc++-6.dll: 23 MB, 2 MB without).
  get_filename_component(name "${file}" NAME)
  execute_process(COMMAND "${TAVENA_STRIP}" --strip-unneeded "${CMAKE_INSTALL_PREFIX}/${name}")
endforeach()
