# P/bin/vx and P/bin/vx-thumbnailer, P/lib/libvx.so with P/include/vx.h and P/libexec/vx/vx-isolated, which it starts, what pkg-config and CMake find it by, P/lib/vx/vxparser.so with P/include/vx
# (boundary), and under P/share the licences, the manual pages, what shells complete
# with, and what tells a desktop of drawings. python/ installs its package.

install(TARGETS vxparser LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/vx)
install(DIRECTORY sdk/include/vx DESTINATION include)
install(DIRECTORY sdk/example/ DESTINATION share/doc/vx/examples/host PATTERN *.txt EXCLUDE)

if(NOT VX_PLUGIN_ONLY)
    install(TARGETS vx vx-thumbnailer RUNTIME DESTINATION bin)
    install(TARGETS vx-isolated vx-viewer RUNTIME DESTINATION libexec/vx)
    install(TARGETS libvx EXPORT vx LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
    install(FILES include/vx.h DESTINATION include)
    file(RELATIVE_PATH VX_PREFIX_FROM_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
    string(REGEX REPLACE "/$" "" VX_PREFIX_FROM_PC "${VX_PREFIX_FROM_PC}")
    configure_file(packaging/vx.pc.in vx.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vx.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
    include(CMakePackageConfigHelpers)
    write_basic_package_version_file(vx-config-version.cmake COMPATIBILITY ExactVersion)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vx-config-version.cmake DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vx)
    install(EXPORT vx FILE vx-config.cmake NAMESPACE vx:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vx)

    install(FILES LICENSE DESTINATION share/doc/vx)
    install(DIRECTORY examples/ DESTINATION share/doc/vx/examples)
    install(FILES devices/colour/profiles/README.md DESTINATION share/doc/vx RENAME press-profile.md)
    install(DIRECTORY docs/man/ DESTINATION share/man/man1)
    install(FILES packaging/completion/vx.bash DESTINATION share/bash-completion/completions RENAME vx)
    install(FILES packaging/completion/_vx DESTINATION share/zsh/site-functions)
    install(FILES packaging/mime/vx-drawing.xml DESTINATION share/mime/packages)
    install(FILES packaging/thumbnailer/vx.thumbnailer DESTINATION share/thumbnailers)
    install(FILES packaging/icons/image-x-vx-drawing.svg DESTINATION share/icons/hicolor/scalable/mimetypes)

    # The viewer, and what has a double click open it, which would open nothing without. Whether it is built is seen when it is installed.
    install(CODE "set(packaging \"${PROJECT_SOURCE_DIR}/packaging\")
if(NOT DEFINED VX_VIEWER)
    set(VX_VIEWER \"${VX_VIEWER}\")
endif()")
    install(CODE [[
if(EXISTS "${VX_VIEWER}/index.html")
    set(share "${CMAKE_INSTALL_PREFIX}/share")
    file(INSTALL "${VX_VIEWER}/" DESTINATION "${share}/vx/viewer")
    file(INSTALL "${packaging}/desktop/vx.desktop" DESTINATION "${share}/applications")
    file(INSTALL "${packaging}/desktop/invalid.lists.vx.metainfo.xml" DESTINATION "${share}/metainfo")
    file(INSTALL "${packaging}/icons/image-x-vx-drawing.svg" DESTINATION "${share}/icons/hicolor/scalable/apps" RENAME "vx.svg")
else()
    message(STATUS "Without a viewer, ${VX_VIEWER} is not there: ./check --web builds it")
endif()]])
endif()
