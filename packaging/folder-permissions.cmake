# Runs on the files before they are packed: CMake makes their folders under the umask of the one who
# packs, and a strict one would lock all others out of the installed tool.
file(CHMOD_RECURSE ${CPACK_TEMPORARY_DIRECTORY} DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
