<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>ConsoleWindow</name>
    <message>
        <location filename="../app/console_window.cpp" line="56"/>
        <source>Connect now</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="68"/>
        <source>Version %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="89"/>
        <source>Connected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="90"/>
        <source>The local backup service answers on %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="99"/>
        <location filename="../app/console_window.cpp" line="122"/>
        <source>Disconnected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="100"/>
        <source>The local backup service does not answer on %1. The console keeps trying to reach it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="109"/>
        <source>Connecting</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="109"/>
        <source>Looking for the local backup service…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="112"/>
        <source>Starting the service</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/console_window.cpp" line="112"/>
        <source>No local backup service answered, so the console started one.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ServiceLauncher</name>
    <message>
        <location filename="../app/service_launcher.cpp" line="55"/>
        <source>The service program %1 is missing.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <location filename="../app/service_launcher.cpp" line="63"/>
        <source>The service program %1 could not be started.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
