# P/bin/vx, P/lib/libvxhost.so, P/lib/vx/vxparser.so, P/include/vx (boundary), P/include/vxhost (host library), and
# under P/share the manual pages and what shells complete with.

install(TARGETS vxparser LIBRARY DESTINATION lib/vx)
install(DIRECTORY sdk/include/vx DESTINATION include)

if(NOT VX_PLUGIN_ONLY)
    install(TARGETS vx RUNTIME DESTINATION bin)
    install(TARGETS vxhost LIBRARY DESTINATION lib ARCHIVE DESTINATION lib)
    # File by file: folders without headers stay away.
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR} host/*.h devices/*.h)
    foreach(header IN LISTS headers)
        cmake_path(GET header PARENT_PATH folder)
        install(FILES ${header} DESTINATION include/vxhost/${folder})
    endforeach()
    configure_file(packaging/vxhost.pc.in vxhost.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vxhost.pc DESTINATION lib/pkgconfig)

    install(DIRECTORY docs/man/ DESTINATION share/man/man1)
    install(FILES packaging/completion/vx.bash DESTINATION share/bash-completion/completions RENAME vx)
    install(FILES packaging/completion/_vx DESTINATION share/zsh/site-functions)
endif()
