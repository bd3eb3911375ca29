# Lays out the pane bundle PANE around its code CODE, from the sources in SOURCE:
#   Contents/Info.plist
#   Contents/MacOS/KestrelConfig              the pane's code
#   Contents/MacOS/Vemora spindeck.app        link to ../../application-bundles/Vemora spindeck.app
#                                             beside the pane's folder
#   Contents/MacOS/Vemora spindeck            link to the one above
#   Contents/Resources/KestrelPrefPane.ui, spindeck.svg (the icon), <lang>.lproj/Localizable.strings
# The pane finds the configuration application as its auxiliary executable named after its
# CFBundleName with ".app/" appended: the two links make that path the installed application,
# and when the application is missing both links dangle, so the pane reports it not found.
# The links are relative, so the installation can move as a whole.
foreach(variable PANE CODE SOURCE)
  if(NOT DEFINED ${variable})
    message(FATAL_ERROR "StagePane.cmake needs -D${variable}=...")
  endif()
endforeach()

set(contents "${PANE}/Contents")
file(MAKE_DIRECTORY "${contents}/MacOS" "${contents}/Resources/en.lproj" "${contents}/Resources/de.lproj")
file(COPY_FILE "${SOURCE}/Info.plist" "${contents}/Info.plist" ONLY_IF_DIFFERENT)
file(COPY_FILE "${CODE}" "${contents}/MacOS/KestrelConfig" ONLY_IF_DIFFERENT)
file(COPY_FILE "${SOURCE}/KestrelPrefPane.ui" "${contents}/Resources/KestrelPrefPane.ui" ONLY_IF_DIFFERENT)
file(COPY_FILE "${SOURCE}/spindeck.svg" "${contents}/Resources/spindeck.svg" ONLY_IF_DIFFERENT)

get_filename_component(panes "${PANE}" DIRECTORY)
get_filename_component(SPINDECK_APPLICATIONS_FOLDER "${panes}/../application-bundles" ABSOLUTE)
foreach(language en de)
  configure_file("${SOURCE}/${language}.lproj/Localizable.strings.in"
                 "${contents}/Resources/${language}.lproj/Localizable.strings" @ONLY)
endforeach()

file(CREATE_LINK "../../../../application-bundles/Vemora spindeck.app" "${contents}/MacOS/Vemora spindeck.app" SYMBOLIC)
file(CREATE_LINK "Vemora spindeck.app" "${contents}/MacOS/Vemora spindeck" SYMBOLIC)
