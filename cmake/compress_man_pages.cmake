# Run by CPack before it packs: Debian keeps man pages compressed.
file(GLOB pages ${CPACK_TEMPORARY_DIRECTORY}/usr/share/man/man*/*)
execute_process(COMMAND gzip -9n ${pages} COMMAND_ERROR_IS_FATAL ANY)
