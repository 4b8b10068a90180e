# What is installed beside the programs: desktop entry, its metadata and icon, manual pages, and the
# service unit of the server. The programs and the library install themselves.

set(packaging "${CMAKE_CURRENT_SOURCE_DIR}/packaging")

install(FILES "${packaging}/org.qel.host.desktop" DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
install(FILES "${packaging}/org.qel.host.metainfo.xml" DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo")
install(FILES "${packaging}/icons/org.qel.host.svg"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps")
install(FILES "${packaging}/postgresql/qel-reader.sql" "${packaging}/haproxy.cfg" DESTINATION "${CMAKE_INSTALL_DATADIR}/qel")
install(FILES "${packaging}/man/qel-host.1" "${packaging}/man/qel-server.1" "${packaging}/man/qel-contract.1"
    DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")

set(QEL_UNITS qel-server.service qel-server@.service)
set(QEL_UNIT_ADDRESSES 127.0.0.1:8480 127.0.0.1:%i)

# systemd reads units from lib/systemd whatever the library folder is called.
# One server, or several of one machine, each named by its port (qel-server@8481).
foreach(unit address IN ZIP_LISTS QEL_UNITS QEL_UNIT_ADDRESSES)
    set(QEL_UNIT_LISTEN "${address}")
    configure_file("${packaging}/qel-server.service.in" "${CMAKE_CURRENT_BINARY_DIR}/${unit}" @ONLY)
    install(FILES "${CMAKE_CURRENT_BINARY_DIR}/${unit}" DESTINATION lib/systemd/system)
endforeach()
