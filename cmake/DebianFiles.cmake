# What Debian wants of a package beside what every installation has: manual pages and the changelog
# compressed. Run by CPack on the files it is about to pack.

function(compress file)
    file(ARCHIVE_CREATE OUTPUT "${file}.gz" PATHS "${file}"
        FORMAT raw COMPRESSION GZip COMPRESSION_LEVEL 9)
    file(REMOVE "${file}")
endfunction()

set(share "${CPACK_TEMPORARY_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}/share")

file(GLOB pages "${share}/man/man1/*.1")
foreach(page IN LISTS pages)
    compress("${page}")
endforeach()

string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE "${share}/doc/tesserine/changelog"
"tesserine (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * Version ${CPACK_PACKAGE_VERSION}; CHANGELOG.md of the sources tells what is new.

 -- ${CPACK_PACKAGE_CONTACT}  ${now}
")
compress("${share}/doc/tesserine/changelog")
