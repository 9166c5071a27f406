# Settings every target of the project carries: language level, warnings and
# the strict Qt defines that keep string conversions explicit.
add_library(calvex_common INTERFACE)
target_compile_features(calvex_common INTERFACE cxx_std_20)
target_compile_options(calvex_common INTERFACE -Wall -Wextra)
if(CALVEX_WERROR)
    target_compile_options(calvex_common INTERFACE -Werror)
endif()
target_compile_definitions(calvex_common INTERFACE
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_USE_QSTRINGBUILDER
    QT_NO_URL_CAST_FROM_STRING
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
    QT_DISABLE_DEPRECATED_UP_TO=0x060000
    CALVEX_VERSION_MAJOR=${PROJECT_VERSION_MAJOR}
    CALVEX_VERSION_MINOR=${PROJECT_VERSION_MINOR}
    CALVEX_VERSION_PATCH=${PROJECT_VERSION_PATCH})
# The version and the installation's shape, for the few sources that need them
# (a generated header, so that a new version rebuilds only those).
include(GNUInstallDirs)
# The desktop's name of the program: desktop entry, icon and AppStream ID
# (reverse DNS of the project's address, calvex-qc.invalid).
set(CALVEX_APP_ID invalid.calvex_qc.CalvexQC)
file(RELATIVE_PATH CALVEX_SHARE_FROM_PROGRAMS ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_DATADIR})
configure_file(${CMAKE_CURRENT_LIST_DIR}/CalvexBuildInfo.h.in ${CMAKE_BINARY_DIR}/generated/CalvexBuildInfo.h @ONLY)
add_library(calvex_build_info INTERFACE)
target_include_directories(calvex_build_info INTERFACE ${CMAKE_BINARY_DIR}/generated)
# The build tree has the installation's shape: programs in bin, data in
# the shared data folder beside it.
get_filename_component(CALVEX_BUILD_SHARE_DIR ${CALVEX_SHARE_FROM_PROGRAMS} ABSOLUTE
                       BASE_DIR ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
set(CALVEX_BUILD_DATA_DIR ${CALVEX_BUILD_SHARE_DIR}/calvex-qc)

# The sanitizers stop the program at the first report, undefined behaviour
# included, so that a test cannot pass over one.
if(CALVEX_SANITIZE)
    target_compile_options(calvex_common INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all
                           -fno-omit-frame-pointer)
    target_link_options(calvex_common INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all)
endif()

# One static library per source folder: every .cpp/.h of the folder, linked to
# the libraries named after it.
function(calvex_folder_library name)
    file(GLOB _sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    file(GLOB _units CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    if(_units)
        calvex_rescan_moc_on_new_files(${name} ${_sources})
        add_library(${name} STATIC ${_sources})
        target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
        target_link_libraries(${name} PUBLIC calvex_common ${ARGN})
    else()
        # A folder of declarations only.
        add_library(${name} INTERFACE ${_sources})
        target_include_directories(${name} INTERFACE ${CMAKE_SOURCE_DIR}/src)
        target_link_libraries(${name} INTERFACE calvex_common ${ARGN})
    endif()
endfunction()

# When a folder's globbed file list changes (a file was added or removed),
# make the target's moc step scan its sources again: otherwise an existing
# build directory keeps the old scan and a new file's "X.moc" is never made.
function(calvex_rescan_moc_on_new_files target)
    set(_list_file ${CMAKE_CURRENT_BINARY_DIR}/${target}_sources.txt)
    string(JOIN "\n" _joined ${ARGN})
    if(EXISTS ${_list_file})
        file(READ ${_list_file} _old)
        if(NOT _old STREQUAL _joined)
            file(REMOVE ${CMAKE_CURRENT_BINARY_DIR}/${target}_autogen/timestamp)
        endif()
    endif()
    file(WRITE ${_list_file} "${_joined}")
endfunction()
