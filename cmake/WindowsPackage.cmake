# What the zip for hosts on Windows holds beside the libraries and the tool: documents, the licences of what others made
# in it, and the definition file of the C interface for linkers that want an import library of their own making.
install(FILES cmake/windows_package.md DESTINATION . RENAME README.md)
install(FILES docs/windows.md docs/abi.md docs/archive_format.md docs/controls.md docs/controls_96.png docs/controls_144.png
  docs/controls_rtl.png exports/vrxmath.txt exports/vrxmath_c.txt DESTINATION docs)

# Debian keeps the licence of each package beside it.
set(licences gcc-mingw-w64-base mingw-w64-common libcli11-dev nlohmann-json3-dev)
foreach(package IN LISTS licences)
  set(file /usr/share/doc/${package}/copyright)
  if(EXISTS ${file})
    install(FILES ${file} DESTINATION licenses RENAME ${package}.txt)
  endif()
endforeach()
if(EXISTS /usr/share/common-licenses/GPL-3)
  install(FILES /usr/share/common-licenses/GPL-3 DESTINATION licenses RENAME GPL-3.txt)
endif()

file(STRINGS vrxmath/c_api.h names REGEX "^VRX_C_API vrx_status VRX_CALL vrx_")
list(TRANSFORM names REPLACE "^.*VRX_CALL (vrx_[a-z0-9_]+)\\(.*$" "  \\1")
list(SORT names)
list(JOIN names "\n" lines)
file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/vrxmath_c.def CONTENT "LIBRARY vrxmath_c.dll\nEXPORTS\n${lines}\n" @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vrxmath_c.def DESTINATION lib)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME vrxmath-${PROJECT_VERSION}-windows-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_STRIP_FILES ON)
include(CPack)
