# tnc_add_program(name SOURCES page... [OUTPUT file] [DEFINES name...] [EXTENSIONS library...] [OPTIONS option...])
#
# A target that compiles the pages to one program, by default name.tna in the binary folder, and is part of all. It is
# made anew when a page changes, whatever a page includes, a library or the compiler. Pages and libraries are files of
# the source folder, in which the compiler runs, so that includes count from there; a page that isn't there is one of the
# binary folder, and a library may be a target.
cmake_policy(VERSION 3.21)
# Ninja reads the rules as they are written, in which files are named as it names them: what CMake makes of a rule for
# Ninja loses names with # and $ in them.
cmake_policy(SET CMP0116 OLD)

function(tnc_add_program name)
    cmake_parse_arguments(PARSE_ARGV 1 program "" "OUTPUT" "SOURCES;DEFINES;EXTENSIONS;OPTIONS")
    if(NOT program_SOURCES OR program_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "tnc_add_program(${name}): SOURCES and what stands there? ${program_UNPARSED_ARGUMENTS}")
    endif()

    set(output ${name}.tna)
    if(program_OUTPUT)
        set(output ${program_OUTPUT})
    endif()
    cmake_path(ABSOLUTE_PATH output BASE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})

    set(target ${output})
    if(CMAKE_GENERATOR MATCHES "Ninja")
        cmake_path(RELATIVE_PATH target BASE_DIRECTORY ${CMAKE_BINARY_DIR})
    endif()

    set(options ${program_OPTIONS})
    foreach(define IN LISTS program_DEFINES)
        list(APPEND options -D ${define})
    endforeach()
    set(libraries)
    foreach(library IN LISTS program_EXTENSIONS)
        if(TARGET ${library})
            set(library $<TARGET_FILE:${library}>)
        else()
            cmake_path(ABSOLUTE_PATH library)
        endif()
        list(APPEND options -b ${library})
        list(APPEND libraries ${library})
    endforeach()
    set(pages)
    foreach(page IN LISTS program_SOURCES)
        if(NOT EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${page})
            cmake_path(ABSOLUTE_PATH page BASE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
        endif()
        list(APPEND pages ${page})
    endforeach()

    add_custom_command(
        OUTPUT ${output}
        COMMAND tnc::tnc-deps --absolute --target ${target} --deps ${output}.d -o ${output} ${options} ${pages}
        DEPENDS ${pages} ${libraries} $<TARGET_FILE:tnc::tnc-deps>
        DEPFILE ${output}.d
        WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}
        COMMENT "Compiling ${name}"
        VERBATIM)
    add_custom_target(${name} ALL DEPENDS ${output})
endfunction()
