# Precompiled headers: for targets over Qt Core and for targets over Qt Widgets, and of each one for
# tests. They halve the time of a whole build. Off unless a preset asks for them: without them a file
# that forgets an include does not compile, and so it is in the release builds.

option(QEL_PCH "Precompile the headers of Qt and of the standard library" OFF)

if(QEL_PCH)
    # Programs are compiled as libraries are, so that all can read the same precompiled header.
    set(CMAKE_CXX_COMPILE_OPTIONS_PIE "-fPIC")

    set(core <algorithm> <functional> <memory> <optional> <span> <string_view> <utility> <vector>
        <QByteArray> <QCoreApplication> <QDateTime> <QFile> <QHash> <QList> <QObject> <QString>
        <QStringList> <QTimer> <QUrl> <QVariant>)
    set(widgets <QAbstractItemView> <QAction> <QApplication> <QBoxLayout> <QComboBox>
        <QHeaderView> <QKeyEvent> <QLabel> <QLineEdit> <QMessageBox> <QPainter> <QPushButton>
        <QStyledItemDelegate> <QTableView> <QTreeView>)

    set(test <QElapsedTimer> <QProcess> <QRegularExpression> <QSignalSpy> <QTcpServer>
        <QTcpSocket> <QTemporaryDir> <QTest> <chrono> <deque>)

    function(qel_add_precompiled kind)
        cmake_parse_arguments(ARG "" "" "LIBS;HEADERS" ${ARGN})
        add_library(qel_precompiled_${kind} STATIC "${CMAKE_CURRENT_BINARY_DIR}/precompiled.cpp")
        set_target_properties(qel_precompiled_${kind} PROPERTIES AUTOMOC OFF AUTOUIC OFF AUTORCC OFF)
        target_link_libraries(qel_precompiled_${kind} PRIVATE qel_options ${ARG_LIBS})
        target_precompile_headers(qel_precompiled_${kind} PRIVATE ${ARG_HEADERS})
    endfunction()

    file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/precompiled.cpp" "")
    qel_add_precompiled(Core LIBS Qt6::Core HEADERS ${core})
    qel_add_precompiled(Widgets LIBS Qt6::Widgets HEADERS ${core} ${widgets})
    if(QEL_BUILD_TESTS)
        qel_add_precompiled(CoreTest LIBS Qt6::Core Qt6::Network Qt6::Test HEADERS ${core} ${test})
        qel_add_precompiled(WidgetsTest LIBS Qt6::Widgets Qt6::Network Qt6::Test
            HEADERS ${core} ${widgets} ${test})
        foreach(kind IN ITEMS CoreTest WidgetsTest)
            target_compile_options(qel_precompiled_${kind} PRIVATE ${QEL_TEST_OPTIONS})
        endforeach()
    endif()
endif()

# Whether a target links Qt Widgets, itself or through libraries of the tree.
function(qel_links_widgets target result)
    set(${result} FALSE PARENT_SCOPE)
    get_target_property(libraries ${target} LINK_LIBRARIES)
    foreach(library IN LISTS libraries)
        set(found FALSE)
        if(library STREQUAL "Qt6::Widgets")
            set(found TRUE)
        elseif(library MATCHES "^qel_" AND TARGET ${library} AND NOT library STREQUAL "qel_options")
            qel_links_widgets(${library} found)
        endif()
        if(found)
            set(${result} TRUE PARENT_SCOPE)
            return()
        endif()
    endforeach()
endfunction()

function(qel_precompile_from target core widgets)
    if(NOT QEL_PCH)
        return()
    endif()
    qel_links_widgets(${target} isWidgets)
    if(isWidgets)
        target_precompile_headers(${target} REUSE_FROM qel_precompiled_${widgets})
    else()
        target_precompile_headers(${target} REUSE_FROM qel_precompiled_${core})
    endif()
endfunction()

# Lets a target, whose libraries are all known, read the precompiled header of its kind.
function(qel_precompile target)
    qel_precompile_from(${target} Core Widgets)
endfunction()

# The same for a test, which is compiled with QEL_TEST_OPTIONS.
function(qel_precompile_test target)
    qel_precompile_from(${target} CoreTest WidgetsTest)
endfunction()
