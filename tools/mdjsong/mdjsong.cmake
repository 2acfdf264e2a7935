# mdj_song(<output> [mdjsong arguments...])
# Generates a test song into the build tree with the mdjsong tool; the file is
# remade when the tool changes.
function(mdj_song output)
  add_custom_command(OUTPUT ${output}
    COMMAND mdjsong -o ${output} ${ARGN}
    DEPENDS mdjsong
    COMMENT "Generating test song ${output}"
    VERBATIM)
endfunction()
