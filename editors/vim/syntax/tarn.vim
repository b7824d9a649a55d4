" Vim syntax of Tarn Script: HTML with tags and expressions. Written by tools/editor_files.py.
if exists("b:current_syntax")
  finish
endif
runtime! syntax/html.vim
unlet! b:current_syntax
syntax case ignore

syntax match tarnVariable contained "\<[A-Za-z_][A-Za-z0-9_.]*"
syntax match tarnFunction contained "\<\h\w*\ze("
syntax match tarnNumber contained "\<\d\+\%(\.\d\+\)\?\>"
syntax match tarnOperator contained "\<\%(bitand\|bitxor\|isnull\|bitoc\|bitor\|bitsl\|bitsr\|crypt\|round\|ecin\|and\|cin\|ein\|mod\|not\|pow\|eq\|ge\|gt\|in\|le\|lt\|ne\|or\)\>\|++\|--\|\$\|\*\|+\|-\|\/\|:"
syntax region tarnText contained start="'" skip="\\." end="'"
syntax region tarnExpression contained containedin=htmlString,tarnString start="{" end="}"
      \ contains=tarnVariable,tarnFunction,tarnNumber,tarnOperator,tarnText
syntax region tarnString contained start=+"+ skip="\\." end=+"+ contains=tarnExpression
syntax match tarnAttribute contained "\%(\w\|-\)\@<!\%(tncommercecontinue_error\|tnforeachcontinue_error\|tnlocalized-token_error\|tnrevealstructure_error\|tnfunctionreturn_error\|tnimportcontinue_error\|tnlocalized-text_error\|tnreferencearray_error\|tnwhilecontinue_error\|tnasynchronous_error\|tncallcontinue_error\|tncommercestop_error\|errormessage_prefix\|errormessage_suffix\|standardoutputlevel\|tnassignarray_error\|tnforcontinue_error\|tnforeachstop_error\|tnpopcontinue_error\|tnfuncreturn_error\|tnimportstop_error\|tncloseview_error\|tndbcommand_error\|tndimension_error\|tnlocalized_error\|tnmakeindex_error\|tnpopdelete_error\|tnreference_error\|tnwhilestop_error\|erroroutputlevel\|tnassembly_error\|tncallstop_error\|tncommerce_error\|tnfunction_error\|tnlockfile_error\|tnopenview_error\|tnrollback_error\|tnsetindex_error\|tntransact_error\|tnundelete_error\|disable-logging\|expression_type\|tncapture_error\|tncomment_error\|tnforeach_error\|tnforstop_error\|tninclude_error\|tnpopstop_error\|tnprimary_error\|tnreindex_error\|tnassign_error\|tncommit_error\|tncreate_error\|tndelete_error\|tnelseif_error\|tnexport_error\|tnfilter_error\|tnifndef_error\|tnimport_error\|tnmember_error\|tnupdate_error\|pin-algorithm\|tnasync_error\|tnclose_error\|tnifdef_error\|tnquery_error\|tnwhile_error\|content-type\|errormessage\|tncall_error\|tnelse_error\|tneval_error\|tnexit_error\|tnfind_error\|tnhide_error\|tnopen_error\|tnpack_error\|tnskip_error\|tnsmtp_error\|filter_type\|tnadd_error\|tnfor_error\|tnpop_error\|expression\|metamethod\|parameters\|pin-digest\|tarn_error\|tndo_error\|tngo_error\|tnif_error\|certvalue\|delimiter\|directory\|expr_type\|indexfile\|interpret\|isolation\|parameter\|certfile\|certpass\|certtype\|database\|iterator\|language\|mailhost\|password\|username\|variable\|command\|headers\|indexes\|subject\|timeout\|access\|action\|fields\|filter\|member\|method\|array\|count\|exact\|files\|first\|flags\|ident\|index\|login\|order\|query\|value\|copy\|expr\|file\|from\|last\|name\|next\|port\|rows\|type\|user\|view\|row\|cc\|id\|to\)\%(\w\|-\)\@!"
syntax match tarnTagName contained "\%(</\?\)\@2<=\%(tncommercecontinue\|tnforeachcontinue\|tnlocalized-token\|tnrevealstructure\|tnfunctionreturn\|tnimportcontinue\|tnlocalized-text\|tnreferencearray\|tnwhilecontinue\|tnasynchronous\|tncallcontinue\|tncommercestop\|tnassignarray\|tnforcontinue\|tnforeachstop\|tnpopcontinue\|tnfuncreturn\|tnimportstop\|tncloseview\|tndbcommand\|tndimension\|tnlocalized\|tnmakeindex\|tnpopdelete\|tnreference\|tnwhilestop\|tnassembly\|tncallstop\|tncommerce\|tnfunction\|tnlockfile\|tnopenview\|tnrollback\|tnsetindex\|tntransact\|tnundelete\|tncapture\|tncomment\|tnforeach\|tnforstop\|tninclude\|tnpopstop\|tnprimary\|tnreindex\|tnassign\|tncommit\|tncreate\|tndelete\|tnelseif\|tnexport\|tnfilter\|tnifndef\|tnimport\|tnmember\|tnupdate\|tnasync\|tnclose\|tnifdef\|tnquery\|tnwhile\|tncall\|tnelse\|tneval\|tnexit\|tnfind\|tnhide\|tnopen\|tnpack\|tnskip\|tnsmtp\|tnadd\|tnfor\|tnpop\|tarn\|tndo\|tngo\|tnif\)\%(\w\|-\)\@!"
syntax region tarnTag start="</\?\%(tncommercecontinue\|tnforeachcontinue\|tnlocalized-token\|tnrevealstructure\|tnfunctionreturn\|tnimportcontinue\|tnlocalized-text\|tnreferencearray\|tnwhilecontinue\|tnasynchronous\|tncallcontinue\|tncommercestop\|tnassignarray\|tnforcontinue\|tnforeachstop\|tnpopcontinue\|tnfuncreturn\|tnimportstop\|tncloseview\|tndbcommand\|tndimension\|tnlocalized\|tnmakeindex\|tnpopdelete\|tnreference\|tnwhilestop\|tnassembly\|tncallstop\|tncommerce\|tnfunction\|tnlockfile\|tnopenview\|tnrollback\|tnsetindex\|tntransact\|tnundelete\|tncapture\|tncomment\|tnforeach\|tnforstop\|tninclude\|tnpopstop\|tnprimary\|tnreindex\|tnassign\|tncommit\|tncreate\|tndelete\|tnelseif\|tnexport\|tnfilter\|tnifndef\|tnimport\|tnmember\|tnupdate\|tnasync\|tnclose\|tnifdef\|tnquery\|tnwhile\|tncall\|tnelse\|tneval\|tnexit\|tnfind\|tnhide\|tnopen\|tnpack\|tnskip\|tnsmtp\|tnadd\|tnfor\|tnpop\|tarn\|tndo\|tngo\|tnif\)\%(\w\|-\)\@!" end=">" containedin=ALLBUT,@tarnWhole
      \ contains=tarnTagName,tarnAttribute,tarnString,tarnExpression
syntax region tarnComment start="<tncomment>" end="</tncomment>" containedin=ALLBUT,@tarnWhole
syntax region tarnAssembly start="<tnassembly>" end="</tnassembly>" containedin=ALLBUT,@tarnWhole
syntax cluster tarnWhole contains=tarnComment,tarnAssembly,tarnTag,tarnString,tarnExpression,tarnText

highlight default link tarnTagName Statement
highlight default link tarnAttribute Type
highlight default link tarnString String
highlight default link tarnText String
highlight default link tarnVariable Identifier
highlight default link tarnFunction Function
highlight default link tarnNumber Number
highlight default link tarnOperator Operator
highlight default link tarnComment Comment
highlight default link tarnAssembly PreProc
let b:current_syntax = "tarn"
