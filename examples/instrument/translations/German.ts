<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>AmPage</name>
    <message>
        <source>Depth</source>
        <translation>Modulationsgrad</translation>
    </message>
    <message>
        <source>Frequency</source>
        <translation>Frequenz</translation>
    </message>
    <message>
        <source>AM</source>
        <translation>AM</translation>
    </message>
    <message>
        <source>Amplitude modulation</source>
        <translation>Amplitudenmodulation</translation>
    </message>
</context>
<context>
    <name>ErrorList</name>
    <message>
        <source>Error</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>Warnung</translation>
    </message>
    <message>
        <source>Information</source>
        <translation>Information</translation>
    </message>
    <message>
        <source>Error list</source>
        <translation>Fehlerliste</translation>
    </message>
    <message>
        <source>Number</source>
        <translation>Nummer</translation>
    </message>
    <message>
        <source>Severity</source>
        <translation>Schwere</translation>
    </message>
    <message>
        <source>Detail</source>
        <translation>Einzelheiten</translation>
    </message>
    <message>
        <source>C&amp;lear</source>
        <translation>&amp;Löschen</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>S&amp;chließen</translation>
    </message>
</context>
<context>
    <name>FrontPanel</name>
    <message>
        <source>Not available on this instrument</source>
        <translation>Auf diesem Gerät nicht verfügbar</translation>
    </message>
    <message>
        <source>About</source>
        <translation>Über das Gerät</translation>
    </message>
    <message>
        <source>Signal generator</source>
        <translation>Signalgenerator</translation>
    </message>
    <message>
        <source>Serial number: %1</source>
        <translation>Seriennummer: %1</translation>
    </message>
    <message>
        <source>Frequency range: %1 to %2</source>
        <translation>Frequenzbereich: %1 bis %2</translation>
    </message>
    <message>
        <source>No errors</source>
        <translation>Keine Fehler</translation>
    </message>
    <message>
        <source>Last error: %1 %2</source>
        <translation>Letzter Fehler: %1 %2</translation>
    </message>
    <message>
        <source>RF ON</source>
        <translation>HF EIN</translation>
    </message>
    <message>
        <source>RF OFF</source>
        <translation>HF AUS</translation>
    </message>
    <message>
        <source>%1: enter a value from %2 to %3</source>
        <translation>%1: bitte einen Wert von %2 bis %3 eingeben</translation>
    </message>
    <message>
        <source>Fre&amp;quency</source>
        <translation>Fre&amp;quenz</translation>
    </message>
    <message>
        <source>L&amp;evel</source>
        <translation>Pe&amp;gel</translation>
    </message>
    <message>
        <source>Type a value with its unit and press Enter, or step the marked digit with the wheel or the up and down keys</source>
        <translation>Einen Wert mit Einheit eintippen und mit Enter bestätigen, oder die markierte Ziffer mit dem Drehrad oder den Pfeiltasten verstellen</translation>
    </message>
</context>
<context>
    <name>PulsePage</name>
    <message>
        <source>Period</source>
        <translation>Periode</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>Breite</translation>
    </message>
    <message>
        <source>Pulse</source>
        <translation>Puls</translation>
    </message>
    <message>
        <source>Pulse modulation</source>
        <translation>Pulsmodulation</translation>
    </message>
</context>
<context>
    <name>Menu</name>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;Signal</source>
        <translation>&amp;Signal</translation>
    </message>
    <message>
        <source>&amp;Enter value</source>
        <translation>&amp;Wert eingeben</translation>
    </message>
    <message>
        <source>&amp;Frequency</source>
        <translation>&amp;Frequenz</translation>
    </message>
    <message>
        <source>&amp;Level</source>
        <translation>&amp;Pegel</translation>
    </message>
    <message>
        <source>S&amp;ource</source>
        <translation>&amp;Quelle</translation>
    </message>
    <message>
        <source>&amp;RF on or off</source>
        <translation>&amp;HF ein oder aus</translation>
    </message>
    <message>
        <source>&amp;Preset</source>
        <translation>&amp;Grundeinstellung</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Windows</source>
        <translation>&amp;Fenster</translation>
    </message>
    <message>
        <source>&amp;Error list</source>
        <translation>F&amp;ehlerliste</translation>
    </message>
    <message>
        <source>&amp;Language</source>
        <translation>S&amp;prache</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;About</source>
        <translation>&amp;Über das Gerät</translation>
    </message>
</context>
</TS>
