" Pages of Tarn Script. Written by tools/editor_files.py.
autocmd BufRead,BufNewFile *.tn setfiletype tarn
