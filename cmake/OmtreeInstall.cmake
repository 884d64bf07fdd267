# What `cmake --install` puts in place: the libraries, the headers by folder, and the package files.
include(CMakePackageConfigHelpers)

# detail/ folders are one level down and so are never named here.
set(OMTREE_HEADER_FOLDERS platform omcell backend/tables backend/tables/om)

file(GLOB OMTREE_PUBLIC_HEADERS CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/omtree.h")
foreach(folder IN LISTS OMTREE_HEADER_FOLDERS)
    file(GLOB headers CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/${folder}/*.h")
    list(APPEND OMTREE_PUBLIC_HEADERS ${headers})
endforeach()

foreach(header IN LISTS OMTREE_PUBLIC_HEADERS)
    get_filename_component(folder "${header}" DIRECTORY)
    install(FILES "${PROJECT_SOURCE_DIR}/${header}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/omtree/${folder}")
endforeach()

install(TARGETS platdep QUORIOCV omcell omtree
    EXPORT omtreeTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/omtree")

# The checking libraries are no targets of the package: it names their files as what its targets are in Debug.
if(OMTREE_CHECKED_VARIANT)
    set(OMTREE_CHECKED_LIBRARIES omcell omtree)
    list(TRANSFORM OMTREE_CHECKED_LIBRARIES APPEND -checked OUTPUT_VARIABLE checked_targets)
    install(TARGETS ${checked_targets} LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
endif()

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/omtree")
install(EXPORT omtreeTargets NAMESPACE omtree:: DESTINATION "${package_folder}")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/omtreeConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/omtreeConfig.cmake"
    INSTALL_DESTINATION "${package_folder}"
    PATH_VARS CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/omtreeConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/omtreeConfig.cmake" "${PROJECT_BINARY_DIR}/omtreeConfigVersion.cmake"
    DESTINATION "${package_folder}")
