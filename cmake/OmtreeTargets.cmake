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

# omtree_add_library(NAME MACRO macro SOURCES glob... [EXCEPT file...] [LINKS target...])
# One shared library with its alias omtree::NAME. A library without a source yet is an interface target,
# so that whatever links it can be configured.
function(omtree_add_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "MACRO" "SOURCES;EXCEPT;LINKS")
    list(TRANSFORM arg_SOURCES PREPEND "${PROJECT_SOURCE_DIR}/")
    list(TRANSFORM arg_EXCEPT PREPEND "${PROJECT_SOURCE_DIR}/")
    file(GLOB sources CONFIGURE_DEPENDS ${arg_SOURCES})
    list(REMOVE_ITEM sources ${arg_EXCEPT})

    if(sources)
        set(public PUBLIC)
        add_library(${name} SHARED ${sources})
        omtree_set_up(${name})
        target_compile_definitions(${name} PRIVATE ${arg_MACRO})
        # A call from a library to itself goes straight to the function, and can be inlined; nobody replaces our
        # functions one by one.
        target_compile_options(${name} PRIVATE -fno-semantic-interposition -fno-plt)
        target_link_options(${name} PRIVATE -Wl,-Bsymbolic-functions)
        set_target_properties(${name} PROPERTIES
            VERSION ${PROJECT_VERSION}
            SOVERSION ${PROJECT_VERSION_MAJOR}
            INSTALL_RPATH "$ORIGIN")
    else()
        set(public INTERFACE)
        add_library(${name} INTERFACE)
    endif()
    add_library(omtree::${name} ALIAS ${name})

    target_compile_features(${name} ${public} cxx_std_17)
    target_compile_definitions(${name} ${public} OMTREE_HARDENED=$<BOOL:${OMTREE_HARDENED}>)
    if(OMTREE_CHECK_HANDLES)
        target_compile_definitions(${name} ${public} OMTREE_CHECK_HANDLES=1)
    endif()
    target_include_directories(${name} ${public}
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/omtree>)
    foreach(link IN LISTS arg_LINKS)
        target_link_libraries(${name} ${public} ${link})
    endforeach()
endfunction()
