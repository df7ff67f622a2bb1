<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>AmPage</name>
    <message>
        <source>Depth</source>
        <translation>Depth</translation>
    </message>
    <message>
        <source>Frequency</source>
        <translation>Frequency</translation>
    </message>
    <message>
        <source>AM</source>
        <translation>AM</translation>
    </message>
    <message>
        <source>Amplitude modulation</source>
        <translation>Amplitude modulation</translation>
    </message>
</context>
<context>
    <name>ErrorList</name>
    <message>
        <source>Error</source>
        <translation>Error</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>Warning</translation>
    </message>
    <message>
        <source>Information</source>
        <translation>Information</translation>
    </message>
    <message>
        <source>Error list</source>
        <translation>Error list</translation>
    </message>
    <message>
        <source>Number</source>
        <translation>Number</translation>
    </message>
    <message>
        <source>Severity</source>
        <translation>Severity</translation>
    </message>
    <message>
        <source>Detail</source>
        <translation>Detail</translation>
    </message>
    <message>
        <source>C&amp;lear</source>
        <translation>C&amp;lear</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Close</translation>
    </message>
</context>
<context>
    <name>FrontPanel</name>
    <message>
        <source>Not available on this instrument</source>
        <translation>Not available on this instrument</translation>
    </message>
    <message>
        <source>About</source>
        <translation>About</translation>
    </message>
    <message>
        <source>Signal generator</source>
        <translation>Signal generator</translation>
    </message>
    <message>
        <source>Serial number: %1</source>
        <translation>Serial number: %1</translation>
    </message>
    <message>
        <source>Frequency range: %1 to %2</source>
        <translation>Frequency range: %1 to %2</translation>
    </message>
    <message>
        <source>No errors</source>
        <translation>No errors</translation>
    </message>
    <message>
        <source>Last error: %1 %2</source>
        <translation>Last error: %1 %2</translation>
    </message>
    <message>
        <source>RF ON</source>
        <translation>RF ON</translation>
    </message>
    <message>
        <source>RF OFF</source>
        <translation>RF OFF</translation>
    </message>
    <message>
        <source>%1: enter a value from %2 to %3</source>
        <translation>%1: enter a value from %2 to %3</translation>
    </message>
    <message>
        <source>Fre&amp;quency</source>
        <translation>Fre&amp;quency</translation>
    </message>
    <message>
        <source>L&amp;evel</source>
        <translation>L&amp;evel</translation>
    </message>
    <message>
        <source>Type a value with its unit and press Enter, or step the marked digit with the wheel or the up and down keys</source>
        <translation>Type a value with its unit and press Enter, or step the marked digit with the wheel or the up and down keys</translation>
    </message>
</context>
<context>
    <name>PulsePage</name>
    <message>
        <source>Period</source>
        <translation>Period</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>Width</translation>
    </message>
    <message>
        <source>Pulse</source>
        <translation>Pulse</translation>
    </message>
    <message>
        <source>Pulse modulation</source>
        <translation>Pulse modulation</translation>
    </message>
</context>
<context>
    <name>Menu</name>
    <message>
        <source>&amp;File</source>
        <translation>&amp;File</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Quit</translation>
    </message>
    <message>
        <source>&amp;Signal</source>
        <translation>&amp;Signal</translation>
    </message>
    <message>
        <source>&amp;Enter value</source>
        <translation>&amp;Enter value</translation>
    </message>
    <message>
        <source>&amp;Frequency</source>
        <translation>&amp;Frequency</translation>
    </message>
    <message>
        <source>&amp;Level</source>
        <translation>&amp;Level</translation>
    </message>
    <message>
        <source>S&amp;ource</source>
        <translation>S&amp;ource</translation>
    </message>
    <message>
        <source>&amp;RF on or off</source>
        <translation>&amp;RF on or off</translation>
    </message>
    <message>
        <source>&amp;Preset</source>
        <translation>&amp;Preset</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;View</translation>
    </message>
    <message>
        <source>&amp;Windows</source>
        <translation>&amp;Windows</translation>
    </message>
    <message>
        <source>&amp;Error list</source>
        <translation>&amp;Error list</translation>
    </message>
    <message>
        <source>&amp;Language</source>
        <translation>&amp;Language</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Help</translation>
    </message>
    <message>
        <source>&amp;About</source>
        <translation>&amp;About</translation>
    </message>
</context>
</TS>
