GOTO/1,2,$
$
$ more
P1