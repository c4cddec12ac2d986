<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="cs_CZ" sourcelanguage="en">
<context>
    <name>CPatientScore</name>
    <message>
        <source>Median difference (x)</source>
        <translation>Medián rozdílů (x)</translation>
    </message>
    <message>
        <source>Linear least squares (x)</source>
        <translation>Lineární regrese (x)</translation>
    </message>
    <message>
        <source>C*e^(k*x) (x)</source>
        <translation>C*e^(k*x) (x)</translation>
    </message>
    <message>
        <source>Standard deviation (y)</source>
        <translation>Směrodatná odchylka (y)</translation>
    </message>
    <message>
        <source>Difference standard deviation offset (y)</source>
        <translation>Směrodatná odchylka rozdílů bez začátku (y)</translation>
    </message>
    <message>
        <source>Interquartile range (y)</source>
        <translation>Mezikvartilové rozpětí (y)</translation>
    </message>
</context>
<context>
    <name>CPatientsModel</name>
    <message>
        <source>B/</source>
        <translation>L/</translation>
    </message>
    <message>
        <source>W/</source>
        <translation>H/</translation>
    </message>
    <message>
        <source>W</source>
        <translation>H</translation>
    </message>
    <message>
        <source>B</source>
        <translation>L</translation>
    </message>
    <message>
        <source>Id patient</source>
        <translation>ID pacienta</translation>
    </message>
    <message>
        <source>Method results</source>
        <translation>Hodnocení</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Median difference</source>
        <translation>Medián rozdílů</translation>
    </message>
    <message>
        <source>Linear least squares</source>
        <translation>Lineární regrese</translation>
    </message>
    <message>
        <source>C*e^(k*x)</source>
        <translation>C*e^(k*x)</translation>
    </message>
    <message>
        <source>Standard deviation</source>
        <translation>Směrodatná odchylka</translation>
    </message>
    <message>
        <source>Difference standard deviation offset</source>
        <translation>SD rozdílů bez začátku</translation>
    </message>
    <message>
        <source>Interquartile range</source>
        <translation>Mezikvartilové rozpětí</translation>
    </message>
    <message>
        <source>Glymark</source>
        <translation>Glymark</translation>
    </message>
    <message>
        <source>Wrong Config</source>
        <translation>Chybné nastavení</translation>
    </message>
    <message>
        <source>Config file doesn&apos;t exist or has invalid format. Default config will be created</source>
        <translation>Soubor s nastavením neexistuje nebo má neplatný formát. Vytvoří se výchozí nastavení.</translation>
    </message>
    <message>
        <source>Open File</source>
        <translation>Otevřít soubor</translation>
    </message>
    <message>
        <source>Open xlsx file with data</source>
        <translation>Otevřít soubor XLSX s daty</translation>
    </message>
    <message>
        <source>Save file</source>
        <translation>Uložit soubor</translation>
    </message>
    <message>
        <source>Exit</source>
        <translation>Ukončit</translation>
    </message>
    <message>
        <source>Export graph</source>
        <translation>Exportovat graf</translation>
    </message>
    <message>
        <source>Export currently selected graph to svg</source>
        <translation>Exportovat právě vybraný graf do SVG</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Nastavení</translation>
    </message>
    <message>
        <source>Save data analysis</source>
        <translation>Uložit analýzu dat</translation>
    </message>
    <message>
        <source>Groups graph</source>
        <translation>Graf všech pacientů</translation>
    </message>
    <message>
        <source>Close file</source>
        <translation>Zavřít soubor</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Soubor</translation>
    </message>
    <message>
        <source>Legend</source>
        <translation>Legenda</translation>
    </message>
    <message>
        <source>Better value color: Green</source>
        <translation>Zelená: lepší než střed</translation>
    </message>
    <message>
        <source>Worse value color: Red</source>
        <translation>Červená: horší než střed</translation>
    </message>
    <message>
        <source>Center value color: Blue</source>
        <translation>Modrá: rovno středu</translation>
    </message>
    <message>
        <source>Additional info: In brackets is on which axis that specific method will be displayed.</source>
        <translation>Poznámka: v závorce je osa, na které se daná metoda zobrazí.</translation>
    </message>
    <message>
        <source>Information</source>
        <translation>Informace</translation>
    </message>
    <message>
        <source>Method Results: Convergence/Variability</source>
        <translation>Hodnocení: konvergence/variabilita</translation>
    </message>
    <message>
        <source>Convergence: B - Better, W - Worse</source>
        <translation>Konvergence: L – lepší, H – horší</translation>
    </message>
    <message>
        <source>Variability: B - Better, W - Worse </source>
        <translation>Variabilita: L – lepší, H – horší </translation>
    </message>
    <message>
        <source>Convergence:</source>
        <translation>Konvergence:</translation>
    </message>
    <message>
        <source>Variability:</source>
        <translation>Variabilita:</translation>
    </message>
    <message>
        <source>Center method:</source>
        <translation>Výpočet středu:</translation>
    </message>
    <message>
        <source>Offset:</source>
        <translation>Vynecháno hodnot:</translation>
    </message>
    <message>
        <source>Show graph</source>
        <translation>Zobrazit graf</translation>
    </message>
    <message>
        <source>Reset selection</source>
        <translation>Zrušit výběr</translation>
    </message>
    <message>
        <source>Median</source>
        <translation>Medián</translation>
    </message>
    <message>
        <source>Average</source>
        <translation>Průměr</translation>
    </message>
    <message>
        <source>Open file</source>
        <translation>Otevřít soubor</translation>
    </message>
    <message>
        <source>Xlsx document (*.xlsx)</source>
        <translation>Sešit XLSX (*.xlsx)</translation>
    </message>
    <message>
        <source>This workbook has no patients: column 1 of row 2 is empty.</source>
        <translation>Tento sešit neobsahuje žádné pacienty: buňka A2 je prázdná.</translation>
    </message>
    <message>
        <source>Every patient needs at least two values.</source>
        <translation>Každý pacient musí mít alespoň dvě hodnoty.</translation>
    </message>
    <message>
        <source>Nothing was opened.</source>
        <translation>Nic nebylo otevřeno.</translation>
    </message>
    <message>
        <source>These rows have fewer:</source>
        <translation>Méně hodnot mají tyto řádky:</translation>
    </message>
    <message>
        <source>Row %1: %2 (%3)</source>
        <translation>Řádek %1: %2 (%3)</translation>
    </message>
    <message>
        <source>%1 is empty</source>
        <translation>buňka %1 je prázdná</translation>
    </message>
    <message>
        <source>%1 is 0</source>
        <translation>v buňce %1 je 0</translation>
    </message>
    <message>
        <source>%1 is FALSE</source>
        <translation>v buňce %1 je NEPRAVDA</translation>
    </message>
    <message>
        <source>%1 is a date or a time</source>
        <translation>v buňce %1 je datum nebo čas</translation>
    </message>
    <message>
        <source>%1 is the error %2</source>
        <translation>v buňce %1 je chyba %2</translation>
    </message>
    <message>
        <source>%1 &quot;%2&quot; is not a number</source>
        <translation>„%2“ v buňce %1 není číslo</translation>
    </message>
    <message>
        <source>Each row must be one patient: the identifier in column A, the values from column B on.</source>
        <translation>Každý řádek musí být jeden pacient: ve sloupci A identifikátor, od sloupce B hodnoty.</translation>
    </message>
    <message>
        <source>and %1 more</source>
        <translation>Počet dalších řádků: %1</translation>
    </message>
    <message>
        <source>0 selected</source>
        <translation>Vybráno: 0</translation>
    </message>
    <message>
        <source>Please select rows from table above to display as graph</source>
        <translation>Vyberte v tabulce výše řádky, které se mají zobrazit v grafu</translation>
    </message>
    <message>
        <source>Graph name</source>
        <translation>Název grafu</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Název</translation>
    </message>
    <message>
        <source>Glymark value graph</source>
        <translation>Graf naměřených hodnot</translation>
    </message>
    <message>
        <source>Patient result graph</source>
        <translation>Graf výsledků pacientů</translation>
    </message>
    <message>
        <source>Graph </source>
        <translation>Graf </translation>
    </message>
    <message>
        <source>No data</source>
        <translation>Žádná data</translation>
    </message>
    <message>
        <source>No data to visualize</source>
        <translation>Nejsou žádná data k zobrazení</translation>
    </message>
    <message>
        <source>Kvadrant 1 (W/W)</source>
        <translation>Kvadrant 1 (H/H)</translation>
    </message>
    <message>
        <source>Kvadrant 2 (B/W)</source>
        <translation>Kvadrant 2 (L/H)</translation>
    </message>
    <message>
        <source>Kvadrant 3 (B/B)</source>
        <translation>Kvadrant 3 (L/L)</translation>
    </message>
    <message>
        <source>Kvadrant 4 (W/B)</source>
        <translation>Kvadrant 4 (H/L)</translation>
    </message>
    <message>
        <source>No ideal</source>
        <translation>Bez ideálního kvadrantu</translation>
    </message>
    <message>
        <source>Select ideal kvadrant</source>
        <translation>Vyberte ideální kvadrant</translation>
    </message>
    <message>
        <source>Svg export</source>
        <translation>Export do SVG</translation>
    </message>
    <message>
        <source>No graphs selected for export</source>
        <translation>Není vybrán žádný graf k exportu</translation>
    </message>
    <message>
        <source>Save SVG</source>
        <translation>Uložit SVG</translation>
    </message>
    <message>
        <source>SVG files (*.svg)</source>
        <translation>Soubory SVG (*.svg)</translation>
    </message>
    <message>
        <source>Graphs export</source>
        <translation>Export grafů</translation>
    </message>
    <message>
        <source>Graph successfully exported</source>
        <translation>Graf byl úspěšně exportován</translation>
    </message>
    <message>
        <source>No data to save</source>
        <translation>Nejsou žádná data k uložení</translation>
    </message>
    <message>
        <source>Save analysis</source>
        <translation>Uložit analýzu</translation>
    </message>
    <message>
        <source>This file cannot be read.</source>
        <translation>Tento soubor nelze přečíst.</translation>
    </message>
    <message>
        <source>This file is not a workbook.</source>
        <translation>Tento soubor není sešit.</translation>
    </message>
    <message>
        <source>This is a workbook of the old kind (.xls). Save it as .xlsx with a spreadsheet program and open that file.</source>
        <translation>Toto je sešit ve starém formátu (.xls). Uložte jej v tabulkovém programu jako .xlsx a otevřete tento nový soubor.</translation>
    </message>
    <message>
        <source>This workbook is protected by a password. Save it without one and open that file.</source>
        <translation>Tento sešit je chráněn heslem. Uložte jej bez hesla a otevřete tento nový soubor.</translation>
    </message>
    <message>
        <source>This workbook is damaged (%1).</source>
        <translation>Tento sešit je poškozený (%1).</translation>
    </message>
    <message>
        <source>archive</source>
        <translation>archiv</translation>
    </message>
    <message>
        <source>relationships of the package</source>
        <translation>relace balíčku</translation>
    </message>
    <message>
        <source>workbook</source>
        <translation>sešit</translation>
    </message>
    <message>
        <source>relationships of the workbook</source>
        <translation>relace sešitu</translation>
    </message>
    <message>
        <source>cell formats</source>
        <translation>formáty buněk</translation>
    </message>
    <message>
        <source>shared texts</source>
        <translation>sdílené texty</translation>
    </message>
    <message>
        <source>worksheet</source>
        <translation>list</translation>
    </message>
    <message>
        <source>it is missing</source>
        <translation>chybí</translation>
    </message>
    <message>
        <source>its bytes are damaged</source>
        <translation>obsah je poškozený</translation>
    </message>
    <message>
        <source>it is not well-formed XML</source>
        <translation>neplatné XML</translation>
    </message>
    <message>
        <source>it declares a document type</source>
        <translation>obsahuje deklaraci DOCTYPE</translation>
    </message>
    <message>
        <source>an element does not belong there</source>
        <translation>prvek tam nepatří</translation>
    </message>
    <message>
        <source>an attribute is unknown</source>
        <translation>neznámý atribut</translation>
    </message>
    <message>
        <source>an index is not a number</source>
        <translation>index není číslo</translation>
    </message>
    <message>
        <source>two of them have the same name</source>
        <translation>stejný identifikátor</translation>
    </message>
    <message>
        <source>its kind is unknown</source>
        <translation>neznámý druh listu</translation>
    </message>
    <message>
        <source>the number of a row or the address of a cell is wrong</source>
        <translation>číslo řádku nebo adresa buňky nesouhlasí</translation>
    </message>
    <message>
        <source>the type of the cell is unknown</source>
        <translation>neznámý typ buňky</translation>
    </message>
    <message>
        <source>there are two contents</source>
        <translation>buňka má dvojí obsah</translation>
    </message>
    <message>
        <source>the cell is there twice with different contents</source>
        <translation>buňka je uvedena dvakrát s různým obsahem</translation>
    </message>
    <message>
        <source>this is not a number</source>
        <translation>toto není číslo</translation>
    </message>
    <message>
        <source>this is neither true nor false</source>
        <translation>hodnota není PRAVDA ani NEPRAVDA</translation>
    </message>
    <message>
        <source>there is no such shared text</source>
        <translation>takový sdílený text neexistuje</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>%1, cell %2: %3</source>
        <translation>%1, buňka %2: %3</translation>
    </message>
    <message>
        <source>This workbook has no worksheet.</source>
        <translation>Tento sešit neobsahuje žádný tabulkový list.</translation>
    </message>
    <message>
        <source>This workbook is too large.</source>
        <translation>Tento sešit je příliš velký.</translation>
    </message>
    <message>
        <source>Graphs</source>
        <translation>Grafy</translation>
    </message>
    <message>
        <source>Results</source>
        <translation>Výsledky</translation>
    </message>
    <message>
        <source>Patients</source>
        <translation>Pacienti</translation>
    </message>
    <message>
        <source>it occurs twice</source>
        <translation>dvojí výskyt</translation>
    </message>
    <message>
        <source>an attribute is missing</source>
        <translation>chybí atribut</translation>
    </message>
    <message>
        <source>there is no such format</source>
        <translation>takový formát neexistuje</translation>
    </message>
    <message>
        <source>an error value is stored as a number</source>
        <translation>chybová hodnota je uložena jako číslo</translation>
    </message>
    <message>
        <source>the worksheet is missing</source>
        <translation>chybí list</translation>
    </message>
    <message>
        <source>text does not belong there</source>
        <translation>text tam nepatří</translation>
    </message>
    <message>
        <source>it requires an unknown extension</source>
        <translation>vyžaduje neznámé rozšíření</translation>
    </message>
    <message>
        <source>it cannot be read</source>
        <translation>nelze přečíst</translation>
    </message>
</context>
<context>
    <name>ResultSubWindow</name>
    <message>
        <source>Median difference</source>
        <translation>Medián rozdílů</translation>
    </message>
    <message>
        <source>Linear least squares fitting</source>
        <translation>Lineární regrese (nejmenší čtverce)</translation>
    </message>
    <message>
        <source>C*e^(k*x)</source>
        <translation>C*e^(k*x)</translation>
    </message>
    <message>
        <source>Standard deviation</source>
        <translation>Směrodatná odchylka</translation>
    </message>
    <message>
        <source>Difference standard deviation offset</source>
        <translation>Směrodatná odchylka rozdílů bez začátku</translation>
    </message>
    <message>
        <source>Interquartile range</source>
        <translation>Mezikvartilové rozpětí</translation>
    </message>
    <message>
        <source>B/W</source>
        <translation>L/H</translation>
    </message>
    <message>
        <source>W/W</source>
        <translation>H/H</translation>
    </message>
    <message>
        <source>B/B</source>
        <translation>L/L</translation>
    </message>
    <message>
        <source>W/B</source>
        <translation>H/L</translation>
    </message>
    <message>
        <source>Convergence</source>
        <translation>Konvergence</translation>
    </message>
    <message>
        <source>Variability</source>
        <translation>Variabilita</translation>
    </message>
    <message>
        <source>Convergence: </source>
        <translation>Konvergence: </translation>
    </message>
    <message>
        <source>Variability: </source>
        <translation>Variabilita: </translation>
    </message>
</context>
<context>
    <name>SettingsDialog</name>
    <message>
        <source>Ok</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Zrušit</translation>
    </message>
    <message>
        <source>Average</source>
        <translation>Průměr</translation>
    </message>
    <message>
        <source>Median</source>
        <translation>Medián</translation>
    </message>
    <message>
        <source>Show info (above right table)</source>
        <translation>Zobrazit informace (nad pravou tabulkou)</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Nastavení</translation>
    </message>
    <message>
        <source>Median difference</source>
        <translation>Medián rozdílů</translation>
    </message>
    <message>
        <source>Linear least squares</source>
        <translation>Lineární regrese</translation>
    </message>
    <message>
        <source>C*e^(k*x)</source>
        <translation>C*e^(k*x)</translation>
    </message>
    <message>
        <source>Standard deviation</source>
        <translation>Směrodatná odchylka</translation>
    </message>
    <message>
        <source>Difference standard deviation offset</source>
        <translation>Směrodatná odchylka rozdílů bez začátku</translation>
    </message>
    <message>
        <source>Interquartile range</source>
        <translation>Mezikvartilové rozpětí</translation>
    </message>
    <message>
        <source>Method</source>
        <translation>Metody</translation>
    </message>
    <message>
        <source>Convergence</source>
        <translation>Konvergence</translation>
    </message>
    <message>
        <source>Variability</source>
        <translation>Variabilita</translation>
    </message>
    <message>
        <source>Show information</source>
        <translation>Zobrazení informací</translation>
    </message>
    <message>
        <source>Center method</source>
        <translation>Výpočet středu</translation>
    </message>
    <message>
        <source>Offset</source>
        <translation>Vynechané hodnoty</translation>
    </message>
    <message>
        <source>Offset count</source>
        <translation>Počet vynechaných počátečních hodnot</translation>
    </message>
</context>
</TS>
