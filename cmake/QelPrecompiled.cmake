# Precompiled headers, one for targets over Qt Core and one for targets over Qt Widgets. They halve
# the time of a whole build. Off unless a preset asks for them: without them a file that forgets an
# include does not compile, and so it is in the release builds.

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

    file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/precompiled.cpp" "")
    foreach(kind IN ITEMS Core Widgets)
        add_library(qel_precompiled_${kind} STATIC "${CMAKE_CURRENT_BINARY_DIR}/precompiled.cpp")
        set_target_properties(qel_precompiled_${kind} PROPERTIES AUTOMOC OFF AUTOUIC OFF AUTORCC OFF)
        target_link_libraries(qel_precompiled_${kind} PRIVATE qel_options Qt6::${kind})
    endforeach()
    target_precompile_headers(qel_precompiled_Core PRIVATE ${core})
    target_precompile_headers(qel_precompiled_Widgets PRIVATE ${core} ${widgets})
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

# Lets a target, whose libraries are all known, read the precompiled header of its kind.
function(qel_precompile target)
    if(NOT QEL_PCH)
        return()
    endif()
    qel_links_widgets(${target} widgets)
    if(widgets)
        target_precompile_headers(${target} REUSE_FROM qel_precompiled_Widgets)
    else()
        target_precompile_headers(${target} REUSE_FROM qel_precompiled_Core)
    endif()
endfunction()
