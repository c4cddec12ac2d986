# SPDX-License-Identifier: GPL-3.0-or-later
# Writes what the owner has filled in into the documents, between the marks that they have for it:
# cmake -DOWNER=<GlymarkOwner.cmake> -DFOLDER=<of the documents> -P FillInOwner.cmake

include("${OWNER}")

# fill(<file> <first mark> <last mark> <text>): the text in place of all between the marks.
function(fill file first last text)
    file(READ "${FOLDER}/${file}" content)
    string(FIND "${content}" "${first}" begin)
    string(FIND "${content}" "${last}" end)
    if(begin EQUAL -1 OR end LESS begin)
        message(FATAL_ERROR "${file} lacks \"${first}\" or, after it, \"${last}\"")
    endif()
    string(LENGTH "${first}" length)
    math(EXPR begin "${begin} + ${length}")
    string(SUBSTRING "${content}" 0 ${begin} before)
    string(SUBSTRING "${content}" ${end} -1 after)
    file(WRITE "${FOLDER}/${file}" "${before}${text}${after}")
endfunction()

# line(<variable> <value> <before> <after>): adds a line with the value, unless that is empty.
function(line variable value before after)
    if(value)
        set(${variable} "${${variable}}${before}${value}${after}\n" PARENT_SCOPE)
    endif()
endfunction()

set(source "You need the file for your system, from a colleague or [built](#build) by yourself.")
if(GLYMARK_HOMEPAGE)
    set(source "You need the file for your system, from <${GLYMARK_HOMEPAGE}> or [built](#build)\nby yourself.")
endif()
fill(README.md "<!-- owner -->" "<!-- end -->" "\n${source}\n")

set(faults "Tell whoever gave you the program.")
if(GLYMARK_FAULTS)
    set(faults "Report it at <${GLYMARK_FAULTS}>.")
endif()
fill(docs/guide.md "<!-- owner -->" "<!-- end -->" "\n\n${faults}\n\n")

set(citation "\n")
line(citation "${GLYMARK_HOMEPAGE}" "url: \"" "\"")
line(citation "${GLYMARK_REPOSITORY}" "repository-code: \"" "\"")
fill(CITATION.cff "# owner" "# end" "${citation}")

set(catalogue "\n")
line(catalogue "${GLYMARK_HOMEPAGE}" "  <url type=\"homepage\">" "</url>")
line(catalogue "${GLYMARK_REPOSITORY}" "  <url type=\"vcs-browser\">" "</url>")
line(catalogue "${GLYMARK_FAULTS}" "  <url type=\"bugtracker\">" "</url>")
fill(packaging/local.glymark.glymark.metainfo.xml "<!-- owner -->" "<!-- end -->" "${catalogue}  ")
