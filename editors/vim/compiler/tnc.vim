" Vim compiler plugin of tnc: ":compiler tnc", then ":make". Written by tools/editor_files.py.
let current_compiler = "tnc"
CompilerSet makeprg=tnc\ %:S
CompilerSet errorformat=%f:%l:\ C%t_%n:\ %m,%-GIn\ file\ included\ from\ %.%#
