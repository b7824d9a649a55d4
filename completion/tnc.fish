# Completion of tnc for fish: share/fish/vendor_completions.d/tnc.fish. tools/table_docs.py writes the table.

# Words, each behind what the list at the cursor has already.
function __tnc_list
    set -l ahead (string match -r '.*,' -- (commandline -ct); or echo '')
    for word in $argv
        echo $ahead$word
    end
end

function __tnc_libraries
    set -l found (commandline -ct)*.so (commandline -ct)*/
    string join \n -- $found
end

# table: fish_options
complete -c tnc -l help -f -d 'Display this information'
complete -c tnc -l version -f -d 'Display version number and exit'
complete -c tnc -s b -xka '(__tnc_libraries)' -d 'Search .DLL/.so <file> for unresolved function calls'
complete -c tnc -s w -xa '(__tnc_list all 1 2 3 4 5 6 7 8 10 12 13 14 15 16 17 18 19 51)' -d 'Suppress warning <warning>'
complete -c tnc -s W -xa '(__tnc_list all 1 2 3 4 5 6 7 8 10 12 13 14 15 16 17 18 19 51)' -d 'Enable otherwise supressed warning <warning>'
complete -c tnc -s X -xa '(__tnc_list all 1 2 3 4 5 6 7 8 10 12 13 14 15 16 17 18 19 51)' -d 'Abort compilation on warning <warning>'
complete -c tnc -s o -rF -d 'Place output in <file>'
complete -c tnc -s C -x -d 'Generate code compatible with <version>'
complete -c tnc -s p -xa '(__tnc_list all scope lock capture async)' -d 'Warn on various pedantic syntax issues'
complete -c tnc -s P -xa '(__tnc_list all scope lock capture async)' -d 'Error on various pedantic syntax issues'
complete -c tnc -s d -d 'Generate pseudo-C code suitable for use with Doxygen'
complete -c tnc -s L -d 'Generate a list of line numbers containing code'
complete -c tnc -s D -x -d 'Define a value for use in TnIFDEF and TnIFNDEF'
complete -c tnc -s O -x -d 'Obfuscate constants by splitting them into <bytes> bytes'
complete -c tnc -s f -d 'Enable whitespace compression by default for functions'
complete -c tnc -s F -d 'Disable text and html output by default for functions'
complete -c tnc -s A -d 'Make access private by default for functions'
# end of table
