# A tree that runs from any directory on any machine with the C library that it was linked with, or a later
# one: everything else is inside.
if(QV_SELF_CONTAINED)
  add_link_options(-static-libstdc++ -static-libgcc)
  set(CMAKE_FIND_LIBRARY_SUFFIXES .a)
  # What the archive in libarchive.a needs, of what bundles are: tar with Zstandard, and zip.
  set(QV_ARCHIVE_NEEDS zstd lzma bz2 nettle z)
endif()
