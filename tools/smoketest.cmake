# Runs the command as a person and a script would, and looks at what it says, what it ends with, and
# what it leaves behind.

file(REMOVE_RECURSE ${FOLDER})
file(MAKE_DIRECTORY ${FOLDER})

# Runs the shell's \a command in FOLDER, where $D is the program and $GOODS the sample text, and
# expects its result, and in all that it prints the regular expression \a expected.
function(expect result expected command)
    execute_process(
        COMMAND ${CMAKE_COMMAND} -E env D=${PROGRAM} GOODS=${GOODS} LC_ALL=C.UTF-8
            bash -c "{ ${command}\n} 2>&1"
        WORKING_DIRECTORY ${FOLDER} RESULT_VARIABLE found OUTPUT_VARIABLE output)
    if(NOT found EQUAL result OR NOT output MATCHES "${expected}")
        message(SEND_ERROR "${command}\nended with ${found}, not ${result} with \"${expected}\":\n"
            "${output}")
    endif()
endfunction()

# The command line.
expect(0 "restructure +drops" [[$D --help]])
expect(0 "^dbftable [0-9.]+\n$" [[$D --version]])
expect(2 "try dbftable --help" [[$D]])
expect(2 "no command nonsense" [[$D nonsense]])
foreach(command info cat check import repair pack recode restructure)
    expect(0 "Usage: .*${command}" "$D ${command} --help")
    expect(2 "dbftable" "$D ${command}")
    expect(2 "nonsense" "$D ${command} --nonsense a b")
endforeach()

foreach(words "info missing" "cat missing" "check missing" "import missing new" "repair missing new"
        "pack missing new" "recode --to 866 missing new" "restructure --drop A --in-place missing")
    expect(3 "missing: .*new" "$D ${words}; code=$?; ls new; exit $code")
endforeach()

# A text becomes a table, and the table the same text.
foreach(codec windows-1251 IBM866 KOI8-U)
    expect(0 "^$" "$D import --encoding ${codec} $GOODS ${codec}.dbf &&
        $D cat --types --deleted ${codec}.dbf | cmp - $GOODS")
endforeach()
expect(0 "records 4, whole 4, marked deleted 1" [[$D info IBM866.dbf]])
expect(0 "\"deletedRecords\":1.*\"records\":4" [[$D info --json IBM866.dbf]])
expect(3 "missing: .*records 4" [[$D info missing IBM866.dbf]])
expect(3 "exists already" [[$D import $GOODS IBM866.dbf]])
expect(0 "^KOI8-U$" [[$D check *.dbf && cat KOI8-U.cpg]])
expect(1 "longer than 10 bytes" [[$D import --encoding UTF-8 $GOODS UTF-8.dbf]])

# What is written of the records.
expect(0 "ЦЕНА +НАЗВАНИЕ\n120.50 +Чай" [[$D cat --columns ЦЕНА,НАЗВАНИЕ IBM866.dbf]])
expect(0 "^ЦЕНА\n-0.05\n$" [[$D cat --csv --where ЦЕНА=-.050 --columns ЦЕНА IBM866.dbf]])
expect(0 "^[*],ЦЕНА\n[*],480.00\n,\n$" [[$D cat --csv --deleted --range 2-3 --columns ЦЕНА IBM866.dbf]])
expect(0 ",\"ЦЕНА\":null,.*:true,.*u000aмолотый\",\"ЦЕНА\":480.00,\"ВЕС\":null,.*:\"2024-03-08\""
    [[$D cat --json --deleted IBM866.dbf | tac]])
expect(2 "no column X" [[$D cat --columns X IBM866.dbf]])
expect(2 "no range" [[$D cat --range 1-2-3 IBM866.dbf]])
expect(0 "" [[$D cat IBM866.dbf | head -1; exit ${PIPESTATUS[1]}]])
expect(3 "No space" [[$D cat --csv IBM866.dbf >/dev/full]])

# No text of a table makes a terminal do anything.
expect(0 "^$" [[printf 'A:C:9\n\033[31mred\n' >red.csv; $D import red.csv red.dbf]])
expect(0 "x1b.31mred" [[for as in '' --csv --json; do
    script -qec "$D cat $as red.dbf" /dev/null </dev/null; done | tee seen; ! grep -q $'\033' seen]])

# Columns are found in the text; what does not fit is refused with its line, or put aside.
expect(0 "A:N:5:2,B:C:3:0,C:D:8:0,D:L:1:0,E_LONG_NAM:C:2:0,E_LONG_N_2:C:1:0"
    [[printf 'A,B,C,D,E_LONG_NAME,E_LONG_NAMES\n-1.5,007,2024-02-29,T,ab,\n12.25,1,,false,é,\n' >f.csv
    $D import --encoding cp1252 f.csv f.dbf; $D cat --types f.dbf]])
expect(1 "line 3: .*line 4: .*2 lines do not fit" [[printf 'A,B\n1,2\n1\nxx,2\n' >bad.csv
    $D import --schema A:N:1,B:N:1 bad.csv bad.dbf; code=$?; test ! -e bad.dbf && exit $code]])
expect(1 "A,B\n1\nxx,2\nA,B\n1,2" [[
    $D import --schema A:N:1,B:N:1 --rejected not.csv bad.csv bad.dbf; code=$?
    cat not.csv; $D cat --csv bad.dbf; exit $code]])
foreach(text "A:C:3\nabcd" "A:C:3\n日" "A:N:3\nx1" "A:N:3\n1234" "A:D:8\n2024-02-30" "A:L:1\nJ"
        "A:C:3\na,b" "A:C:3\n\"a" "A:C:3\n\"a\"b" "A\n\"b" "")
    file(WRITE ${FOLDER}/refused.csv "${text}")
    expect(1 "line" [[$D import refused.csv refused.dbf; code=$?; ls refused.dbf* 2>&1 | grep -q 'No such' &&
        exit $code]])
endforeach()

# Damage is found, and mended into a new file.
expect(1 "counts 9 records, the file holds 3.*torn: [0-9]+ of" [[cp IBM866.dbf torn.dbf
    truncate -s -5 torn.dbf; printf '\011' | dd of=torn.dbf bs=1 seek=4 conv=notrunc status=none
    $D check torn.dbf]])
expect(0 "3 records of 9 kept" [[$D repair torn.dbf mended.dbf && $D check mended.dbf]])
expect(1 "no end marker" [[cp IBM866.dbf marker.dbf; truncate -s -1 marker.dbf; $D check marker.dbf]])
expect(0 "" [[$D repair marker.dbf whole.dbf && cmp whole.dbf IBM866.dbf]])
expect(1 "column B: 1 values cannot be read, first in record 1" [[printf 'B:D:8\n2024-02-29\n' >d.csv
    $D import d.csv d.dbf; sed -i s/20240229/20240230/ d.dbf; $D check d.dbf]])
expect(1 "" [[head -c 40 IBM866.dbf >short.dbf; $D check short.dbf]])
expect(3 "short.dbf" [[$D cat short.dbf]])
expect(3 "4 to 9.*cannot be read|cannot be read" [[$D cat --csv torn.dbf]])

# Tables are rewritten into a new file, or in their place.
expect(0 "records 3, whole 3, marked deleted 0" [[$D pack IBM866.dbf packed.dbf; $D info packed.dbf]])
expect(0 "" [[cp IBM866.dbf place.dbf; $D pack --in-place place.dbf; cmp place.dbf packed.dbf]])
expect(0 "windows-1251.*Кофе" [[$D recode --to 1251 IBM866.dbf recoded.dbf; $D info recoded.dbf
    $D cat --deleted recoded.dbf]])
expect(0 "UTF-8A\nКофе\nwindows-1251A\nКофе" [[printf 'A:C:20\nКофе\n' >short.csv; $D import --encoding cp866 short.csv place8.dbf
    for codec in UTF-8 1251; do $D recode --in-place --to $codec place8.dbf
        cat place8.cpg; $D cat --csv place8.dbf; $D check place8.dbf; done]])
expect(3 "column name.*not fit" [[cp IBM866.dbf same.dbf; $D recode --to UTF-8 --in-place same.dbf; code=$?
    cmp same.dbf IBM866.dbf && exit $code]])
expect(3 "НАЗВАНИЕ" [[$D recode --to 1252 IBM866.dbf no.dbf; code=$?; test ! -e no.dbf && exit $code]])
expect(0 "^NEW:C:3:0,ЦЕНА:N:12:3,TITLE:C:24:0,ВЕС:F:20:3,В_НАЛИЧИИ:L:1:0\n,120.500,.*Чай" [[
    $D restructure --add NEW:C:3 --drop ПОСТУПИЛ --rename НАЗВАНИЕ=TITLE --resize ЦЕНА:12:3 \
        --move TITLE:2 --move NEW:1 IBM866.dbf new.dbf && $D cat --types new.dbf]])
expect(3 "fit" [[cp IBM866.dbf same.dbf; $D restructure --in-place --resize ЦЕНА:3:2 same.dbf; code=$?
    cmp same.dbf IBM866.dbf && exit $code]])
foreach(edit "--drop X" "--add ЦЕНА:C:3" "--rename ЦЕНА=" "--resize В_НАЛИЧИИ:2" "--move ЦЕНА:9" "")
    expect(2 "dbftable" "$D restructure ${edit} IBM866.dbf no.dbf; code=$?; test ! -e no.dbf && exit $code")
endforeach()
expect(2 "in-place" [[$D pack IBM866.dbf]])

# Memos are read, looked for and taken along.
expect(1 "column A: 1 values cannot be read, first in record 2" [[
    printf 'A:C:10\n         1\n         9\n' >m.csv; $D import m.csv m.dbf
    printf '\203' | dd of=m.dbf bs=1 conv=notrunc status=none
    printf M | dd of=m.dbf bs=1 seek=43 conv=notrunc status=none
    { head -c 512 /dev/zero; printf 'long text\032'; } >m.dbt; $D check m.dbf]])
expect(3 "{\"A\":\"long text\"}\n{\"A\":null}\n.*not whole" [[$D cat --json m.dbf]])
expect(0 "memo file .*n.dbt.*long text" [[$D restructure --rename A=B m.dbf n.dbf; $D info n.dbf
    $D cat --range 1-1 n.dbf]])
expect(3 "memo file would stay" [[$D recode --to 866 --in-place m.dbf]])

# An index file that would be wrong keeps a table from being rewritten, and is announced by no copy.
expect(0 "index.*\n 00\n 00\n" [[cp IBM866.dbf i.dbf
    printf '\001' | dd of=i.dbf bs=1 seek=28 conv=notrunc status=none
    $D pack --in-place i.dbf; [ $? -eq 3 ] && $D pack i.dbf j.dbf && od -An -tx1 -j28 -N1 j.dbf &&
        $D pack --in-place --ignore-indexes i.dbf && od -An -tx1 -j28 -N1 i.dbf]])

# Nothing replaces what is read, under whatever name, nor a pipe.
expect(0 "^$" [[ln IBM866.dbf hard; ln -s IBM866.dbf symbolic; mkfifo pipe; cp IBM866.dbf before
    for target in IBM866.dbf hard symbolic pipe /dev/null; do
        for command in 'cat --csv --output' 'pack' 'repair' 'recode --to 1251' 'restructure --drop ВЕС'; do
            case $command in cat*) words="$target IBM866.dbf" ;; *) words="IBM866.dbf $target" ;; esac
            $D $command $words 2>errors; [ $? -eq 3 ] && grep -q 'not replaced' errors || exit 1
        done
    done; test -p pipe && cmp before IBM866.dbf]])

# An import that is stopped while it waits for more leaves nothing, one that is killed only a part.
foreach(signal TERM INT HUP KILL)
    expect(0 "^$" "set -m; rm -f slow killed.dbf*; mkfifo slow
        $D import slow killed.dbf 2>/dev/null & importer=$!
        exec 3>slow; echo A:C:3 >&3; yes abc | head -100000 >&3
        for try in {1..100}; do ls killed.dbf* >listing 2>/dev/null && break; sleep 0.1; done
        kill -${signal} $importer; exec 3>&-; wait $importer 2>/dev/null; code=$?
        grep -q part listing && test ! -e killed.dbf || exit 1
        [ ${signal} = KILL ] || { [ $code -eq 3 ] && ! ls killed.dbf*; } 2>/dev/null")
endforeach()

# No message holds a whole cell of any length.
expect(0 "^[0-4]?[0-9]?[0-9]\n$" [[{ echo A:C:3; head -c 100000 /dev/zero | tr '\0' x; } >long.csv
    $D import long.csv long.dbf 2>&1 | wc -c]])
