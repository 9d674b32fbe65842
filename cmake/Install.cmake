# P/bin/vx, P/lib/vx/vxparser.so and P/include/vx (boundary), and under P/share the manual pages and what shells complete with.

install(TARGETS vxparser LIBRARY DESTINATION lib/vx)
install(DIRECTORY sdk/include/vx DESTINATION include)

if(NOT VX_PLUGIN_ONLY)
    install(TARGETS vx RUNTIME DESTINATION bin)
    install(DIRECTORY docs/man/ DESTINATION share/man/man1)
    install(FILES packaging/completion/vx.bash DESTINATION share/bash-completion/completions RENAME vx)
    install(FILES packaging/completion/_vx DESTINATION share/zsh/site-functions)
endif()
