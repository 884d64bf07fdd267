# How every target of this project is compiled, and how a library of it is put together.

set(OMTREE_WARNINGS -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
set(OMTREE_SANITIZE_FLAGS -fsanitize=${OMTREE_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)

# Language level, warnings and sanitizers for one target of ours.
function(omtree_set_up target)
    target_compile_features(${target} PRIVATE cxx_std_20)
    set_target_properties(${target} PROPERTIES
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON)
    target_compile_options(${target} PRIVATE ${OMTREE_WARNINGS} $<$<BOOL:${OMTREE_WERROR}>:-Werror>)
    if(OMTREE_SANITIZE)
        target_compile_options(${target} PRIVATE ${OMTREE_SANITIZE_FLAGS})
        target_link_options(${target} PRIVATE ${OMTREE_SANITIZE_FLAGS})
    endif()
endfunction()

# The sources of one library, put together as a shared library with what is ours alone: nothing that its users see.
function(omtree_put_together name macro)
    add_library(${name} SHARED ${ARGN})
    omtree_set_up(${name})
    target_compile_definitions(${name} PRIVATE ${macro})
    # A call from a library to itself goes straight to the function, and can be inlined; nobody replaces our
    # functions one by one.
    target_compile_options(${name} PRIVATE -fno-semantic-interposition -fno-plt)
    target_link_options(${name} PRIVATE -Wl,-Bsymbolic-functions)
    set_target_properties(${name} PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        INSTALL_RPATH "$ORIGIN")
endfunction()

# omtree_add_library(NAME MACRO macro SOURCES glob... [EXCEPT file...] [LINKS target...] [HANDLES])
# One shared library with its alias omtree::NAME. A library without a source yet is an interface target,
# so that whatever links it can be configured.
#
# HANDLES says that the layout of its classes depends on OMTREE_CHECK_HANDLES. With OMTREE_CHECKED_VARIANT there is then
# a second library, NAME-checked, from the same sources: built with the checks, linked by the -checked library of each of
# LINKS that has one, and under a file name and SONAME of its own, so that the two never stand in for each other.
function(omtree_add_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "HANDLES" "MACRO" "SOURCES;EXCEPT;LINKS")
    list(TRANSFORM arg_SOURCES PREPEND "${PROJECT_SOURCE_DIR}/")
    list(TRANSFORM arg_EXCEPT PREPEND "${PROJECT_SOURCE_DIR}/")
    file(GLOB sources CONFIGURE_DEPENDS ${arg_SOURCES})
    list(REMOVE_ITEM sources ${arg_EXCEPT})

    set(public INTERFACE)
    if(sources)
        set(public PUBLIC)
        omtree_put_together(${name} ${arg_MACRO} ${sources})
    else()
        add_library(${name} INTERFACE)
    endif()
    add_library(omtree::${name} ALIAS ${name})
    omtree_set_usage(${name} ${public} "${OMTREE_CHECK_HANDLES}" ${arg_LINKS})

    if(sources AND arg_HANDLES AND OMTREE_CHECKED_VARIANT)
        omtree_put_together(${name}-checked ${arg_MACRO} ${sources})
        set(links)
        foreach(link IN LISTS arg_LINKS)
            if(TARGET ${link}-checked)
                list(APPEND links ${link}-checked)
            else()
                list(APPEND links ${link})
            endif()
        endforeach()
        omtree_set_usage(${name}-checked PUBLIC ON ${links})
    endif()
endfunction()

# What the users of a library compile and link with.
function(omtree_set_usage name public checks_handles)
    target_compile_features(${name} ${public} cxx_std_17)
    target_compile_definitions(${name} ${public} OMTREE_HARDENED=$<BOOL:${OMTREE_HARDENED}>)
    if(checks_handles)
        target_compile_definitions(${name} ${public} OMTREE_CHECK_HANDLES=1)
    endif()
    target_include_directories(${name} ${public}
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/omtree>)
    foreach(link IN LISTS ARGN)
        target_link_libraries(${name} ${public} ${link})
    endforeach()
endfunction()
