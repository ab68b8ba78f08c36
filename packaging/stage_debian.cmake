# SPDX-License-Identifier: Apache-2.0
# cpack runs it on the tree that becomes the Debian package: the files that Debian's policy asks for.
set(top ${CPACK_TEMPORARY_INSTALL_DIRECTORY})
set(pages ${top}/usr/share/doc/zanl-profile)
set(epoch $ENV{SOURCE_DATE_EPOCH})

# The text of the licence is a file of each Debian system.
file(REMOVE ${pages}/LICENSE)
file(MAKE_DIRECTORY ${pages}/libraries)
file(COPY_FILE ${ZAN_PACKAGING_FOLDER}/debian/copyright ${pages}/copyright)
execute_process(COMMAND date --utc --rfc-email --date=@${epoch}
                OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
file(WRITE ${pages}/changelog
"zanl-profile (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * ${pages}/CHANGELOG.md has the changes.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
file(READ ${pages}/changelog changelog)
string(REPLACE "${top}" "" changelog "${changelog}")
file(WRITE ${pages}/changelog "${changelog}")
file(CHMOD ${pages}/copyright ${pages}/changelog PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

# Parts of these libraries are in the programs.
foreach(library libboost libcli11 libfmt libtinyxml2 libutf8proc libxxhash rapidjson)
    file(COPY_FILE /usr/share/doc/${library}-dev/copyright ${pages}/libraries/${library}-dev)
endforeach()

file(GLOB man_pages ${top}/usr/share/man/man1/*.1)
execute_process(COMMAND gzip -9 --no-name ${pages}/changelog ${man_pages} COMMAND_ERROR_IS_FATAL ANY)
file(GLOB archives ${top}/usr/lib/*/*.a)
execute_process(COMMAND strip --strip-unneeded --remove-section=.comment --enable-deterministic-archives ${archives}
                COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND find ${top} -exec touch --no-dereference --date=@${epoch} {} +
                COMMAND_ERROR_IS_FATAL ANY)
