# Writes build_version.h: the project's version and, when the sources are a
# git checkout, the commit they were built from ("-modified" when the
# checkout held changes). Run at every build; the header is rewritten only
# when its content changes, so an unchanged checkout rebuilds nothing.
set(commit "")
find_package(Git QUIET)
if(GIT_FOUND)
  execute_process(COMMAND "${GIT_EXECUTABLE}" -C "${SOURCE_DIR}" rev-parse --short=12 HEAD
                  OUTPUT_VARIABLE commit OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    set(commit "")
  endif()
  if(commit)
    # No optional locks: a build must never hold up the developer's own git.
    execute_process(COMMAND "${GIT_EXECUTABLE}" --no-optional-locks -C "${SOURCE_DIR}" status --porcelain
                            --untracked-files=no
                    OUTPUT_VARIABLE changes OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    if(changes)
      string(APPEND commit "-modified")
    endif()
  endif()
endif()
file(CONFIGURE OUTPUT "${OUTPUT}" CONTENT "#pragma once
#define VLC_ARTIFACTS_VERSION \"${VERSION}\"
#define VLC_ARTIFACTS_COMMIT \"${commit}\"
" @ONLY)
