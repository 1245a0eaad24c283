# Installs the build folder BUILD into a fresh folder, and looks whether what the desktop files name is
# there. Run by CTest.

set(prefix "${BUILD}/install-test")
file(REMOVE_RECURSE "${prefix}")
execute_process(
    COMMAND "${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${prefix}"
    OUTPUT_QUIET
    COMMAND_ERROR_IS_FATAL ANY)

function(expect file)
    if(NOT EXISTS "${file}")
        message(SEND_ERROR "${file} was not installed")
    endif()
endfunction()

# The first group of what a line of an installed file matches.
function(read_from file pattern result)
    expect("${prefix}/share/${file}")
    file(STRINGS "${prefix}/share/${file}" lines REGEX "${pattern}")
    list(GET lines 0 line)
    string(REGEX MATCH "${pattern}" ignored "${line}")
    set(${result} "${CMAKE_MATCH_1}" PARENT_SCOPE)
endfunction()

set(id app.tesserine.Tesserine)
read_from(dbus-1/services/${id}.service "^Exec=(.*)$" service)
expect("${service}")
read_from(applications/${id}.desktop "^Exec=([^ ]*)" program)
expect("${prefix}/bin/${program}")
read_from(applications/${id}.desktop "^Icon=(.*)$" icon)
expect("${prefix}/share/icons/hicolor/scalable/apps/${icon}.svg")
read_from(mime/packages/${id}.xml "glob pattern=\"([^\"]*)\"" glob)
if(NOT glob STREQUAL "*.enex")
    message(SEND_ERROR "the type of export files is not known")
endif()
expect("${prefix}/share/metainfo/${id}.metainfo.xml")
expect("${prefix}/bin/tesserine")
foreach(program IN ITEMS tesserine tesserine-desktop tesserine-server)
    expect("${prefix}/share/man/man1/${program}.1")
endforeach()
expect("${prefix}/lib/tesserine/tesserine-network.so")
expect("${prefix}/bin/tesserine-server")
expect("${prefix}/lib/systemd/user/tesserine-server.service")

file(REMOVE_RECURSE "${prefix}")
