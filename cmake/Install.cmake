# P/bin/vx, P/lib/libvxhost.so, P/lib/vx/vxparser.so, P/include/vx (boundary), P/include/vxhost (host library).

install(TARGETS vxparser LIBRARY DESTINATION lib/vx)
install(DIRECTORY sdk/include/vx DESTINATION include)

if(NOT VX_PLUGIN_ONLY)
    install(TARGETS vx RUNTIME DESTINATION bin)
    install(TARGETS vxhost LIBRARY DESTINATION lib ARCHIVE DESTINATION lib)
    install(DIRECTORY host devices DESTINATION include/vxhost FILES_MATCHING PATTERN "*.h")
    configure_file(packaging/vxhost.pc.in vxhost.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vxhost.pc DESTINATION lib/pkgconfig)
endif()
