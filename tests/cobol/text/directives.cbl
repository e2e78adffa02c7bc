identification division.
program-id. directives.
data division.
working-storage section.
>>set sourceformat "free"
>>define level as 3
>>evaluate level
>>when 1
01 a pic x value "1".
>>when 2 thru 4
>>if level = 3
01 a pic x value "3".
>>else
01 a pic x value "4".
>>end-if
>>when 3
01 a pic x value "N".
>>when other
01 a pic x value "O".
>>end-evaluate
>>evaluate true
>>when level > 5
01 b pic x value "5".
>>when other
01 b pic x value "<".
>>evaluate level
>>when 3
01 c pic x value "C".
>>end-evaluate
>>end-evaluate
>>if nothing defined
>>evaluate level
>>when other
01 never.
>>end-evaluate
>>end-if
>>if (level = 3 or level = 4) and level = 5
01 d pic x value "W".
>>elif not (level = 3 and level = 4) and (level is defined)
01 d pic x value "P".
>>end-if
copy fixd.
copy free1.
>>define minus-two as -2
01 lev constant from level.
01 two constant is global from minus-two.
01 lv. 02 pic x occurs lev value "*".
procedure division.
    display a b c d fx fr-name fr-2 lv two
    goback.
