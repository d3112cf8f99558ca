# Runs on the files of all packages before they are packed.
file(GLOB_RECURSE pages "${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/man/*.1")
foreach(page IN LISTS pages)
  execute_process(COMMAND gzip -9n "${page}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()
