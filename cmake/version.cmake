# Writes the source with the version and the revision, if its content changes:
# cmake -D TREE=… -D VERSION=… -D FROM=version.cpp.in -D TO=version.cpp -P version.cmake
set(KVX_VERSION_TEXT ${VERSION})
# Without safe.directory, git refuses to read a clone of another user.
execute_process(COMMAND git -c safe.directory=* -C ${TREE} rev-parse --short=12 HEAD
                OUTPUT_VARIABLE revision OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE status)
if(status EQUAL 0)
  string(APPEND KVX_VERSION_TEXT " (revision ${revision})")
endif()
configure_file(${FROM} ${TO} @ONLY) # leaves an equal file untouched, so that a commit recompiles one source
