# A tree that runs from any directory on any machine with the C library that it was linked with, or a later
# one: everything else is inside.
if(QV_SELF_CONTAINED)
  # Sections that nothing uses go, and with them what the formats of archives would need that no bundle is.
  add_link_options(-static-libstdc++ -static-libgcc LINKER:--gc-sections)
  set(CMAKE_FIND_LIBRARY_SUFFIXES .a)
  # What libarchive.a needs for bundles: tar with Zstandard, and zip.
  foreach(name zstd lzma bz2 nettle z)
    find_library(QV_STATIC_${name} ${name} REQUIRED)
    list(APPEND QV_ARCHIVE_NEEDS ${QV_STATIC_${name}})
  endforeach()
endif()
