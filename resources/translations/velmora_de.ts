<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>AssistantView</name>
    <message>
        <source>Velmora</source>
        <translation>Velmora</translation>
    </message>
    <message>
        <source>Menu</source>
        <translation>Menü</translation>
    </message>
    <message>
        <source>Close (Escape)</source>
        <translation>Schließen (Escape)</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>What&apos;s on your mind?</source>
        <translation>Was beschäftigt Sie?</translation>
    </message>
    <message>
        <source>Click when you have said it</source>
        <translation>Klicken, wenn alles gesagt ist</translation>
    </message>
    <message>
        <source>Stop listening</source>
        <translation>Zuhören beenden</translation>
    </message>
    <message>
        <source>Talk (Space)</source>
        <translation>Sprechen (Leertaste)</translation>
    </message>
    <message>
        <source>Talk</source>
        <translation>Sprechen</translation>
    </message>
    <message>
        <source>Stop speaking (Space)</source>
        <translation>Antwort abbrechen (Leertaste)</translation>
    </message>
    <message>
        <source>Stop speaking</source>
        <translation>Antwort abbrechen</translation>
    </message>
</context>
<context>
    <name>HelpWindow</name>
    <message>
        <source>Velmora Help</source>
        <translation>Hilfe zu Velmora</translation>
    </message>
    <message>
        <source>Help page</source>
        <translation>Hilfeseite</translation>
    </message>
</context>
<context>
    <name>InputDeviceAlert</name>
    <message>
        <source>Google Assistant</source>
        <translation>Google Assistant</translation>
    </message>
    <message>
        <source>Please attach Audio Input device to start with Google Assistant</source>
        <translation>Bitte schließen Sie ein Audio-Eingabegerät an, um Google Assistant zu verwenden</translation>
    </message>
</context>
<context>
    <name>LoadingView</name>
    <message>
        <source>Velmora is getting ready…</source>
        <translation>Velmora wird vorbereitet …</translation>
    </message>
    <message>
        <source>Getting ready</source>
        <translation>Wird vorbereitet</translation>
    </message>
</context>
<context>
    <name>Localizable</name>
    <message>
        <source>WiFi</source>
        <translation>WLAN</translation>
    </message>
    <message>
        <source>Cellular</source>
        <translation>Mobilfunk</translation>
    </message>
    <message>
        <source>No Connection</source>
        <translation>Keine Verbindung</translation>
    </message>
</context>
<context>
    <name>LoginView</name>
    <message>
        <source>Sign in</source>
        <translation>Anmelden</translation>
    </message>
    <message>
        <source>Sign-in page</source>
        <translation>Anmeldeseite</translation>
    </message>
</context>
<context>
    <name>LoginWindowController</name>
    <message>
        <source>Sign in to Velmora</source>
        <translation>Bei Velmora anmelden</translation>
    </message>
    <message>
        <source>Sign-in page</source>
        <translation>Anmeldeseite</translation>
    </message>
</context>
<context>
    <name>MASShortcut</name>
    <message>
        <source>Space</source>
        <translation>Leertaste</translation>
    </message>
    <message>
        <source>This combination cannot be used because it is already used by a system-wide keyboard shortcut.
If you really want to use this key combination, most shortcuts can be changed in the Keyboard &amp; Mouse panel in System Preferences.</source>
        <translation>Diese Kombination kann nicht verwendet werden, weil sie schon ein systemweites Tastenkürzel ist.
Wenn Sie genau diese Tasten möchten: Die meisten Tastenkürzel lassen sich in den Systemeinstellungen unter „Tastatur &amp; Maus“ ändern.</translation>
    </message>
    <message>
        <source>This shortcut cannot be used because it is already used by the menu item ‘%@’.</source>
        <translation>Dieses Tastenkürzel kann nicht verwendet werden, weil es schon zum Menüpunkt „%@“ gehört.</translation>
    </message>
    <message>
        <source>Shortcut set</source>
        <translation>Tastenkürzel festgelegt</translation>
    </message>
    <message>
        <source>Shortcut cleared</source>
        <translation>Tastenkürzel gelöscht</translation>
    </message>
    <message>
        <source>Delete shortcut</source>
        <translation>Tastenkürzel löschen</translation>
    </message>
    <message>
        <source>Click to record new shortcut</source>
        <translation>Klicken, um ein neues Tastenkürzel aufzunehmen</translation>
    </message>
    <message>
        <source>keyboard shortcut</source>
        <translation>Tastenkürzel</translation>
    </message>
    <message>
        <source>To record a new shortcut, click this button, and then type the new shortcut, or press delete to clear an existing shortcut.</source>
        <translation>Um ein neues Tastenkürzel aufzunehmen, klicken Sie auf diese Schaltfläche und drücken Sie dann die neuen Tasten. Die Löschtaste entfernt ein vorhandenes Tastenkürzel.</translation>
    </message>
    <message>
        <source>Record Shortcut</source>
        <translation>Tastenkürzel aufnehmen</translation>
    </message>
    <message>
        <source>Use Old Shortcut</source>
        <translation>Altes Tastenkürzel behalten</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Type New Shortcut</source>
        <translation>Neue Tasten drücken</translation>
    </message>
    <message>
        <source>Type Shortcut</source>
        <translation>Tasten drücken</translation>
    </message>
    <message>
        <source>The key combination %@ cannot be used</source>
        <translation>Die Tastenkombination %@ kann nicht verwendet werden</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>PortalHotKeyCenter</name>
    <message>
        <source>Open Velmora (%1)</source>
        <translation>Velmora öffnen (%1)</translation>
    </message>
</context>
<context>
    <name>PreferencesWindow</name>
    <message>
        <source>Velmora Preferences</source>
        <translation>Einstellungen von Velmora</translation>
    </message>
    <message>
        <source>Preferences</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>&amp;General</source>
        <translation>&amp;Allgemein</translation>
    </message>
    <message>
        <source>&amp;Shortcut:</source>
        <translation>&amp;Tastenkürzel:</translation>
    </message>
    <message>
        <source>&amp;Microphone:</source>
        <translation>&amp;Mikrofon:</translation>
    </message>
    <message>
        <source>Microphone</source>
        <translation>Mikrofon</translation>
    </message>
    <message>
        <source>&amp;Listen for “okay mac”</source>
        <translation>Auf „okay mac“ &amp;hören</translation>
    </message>
    <message>
        <source>The microphone is open while this is on. What it hears stays on this computer until you have said the words.</source>
        <translation>Solange dies eingeschaltet ist, ist das Mikrofon offen. Was es hört, bleibt auf diesem Rechner, bis Sie die Worte gesagt haben.</translation>
    </message>
    <message>
        <source>&amp;Run Velmora when I log in</source>
        <translation>Velmora beim Anmelden &amp;starten</translation>
    </message>
    <message>
        <source>Account:</source>
        <translation>Konto:</translation>
    </message>
    <message>
        <source>Sign &amp;out</source>
        <translation>A&amp;bmelden</translation>
    </message>
    <message>
        <source>&amp;About</source>
        <translation>&amp;Über</translation>
    </message>
    <message>
        <source>Icon of the application</source>
        <translation>Symbol der Anwendung</translation>
    </message>
    <message>
        <source>Version</source>
        <translation>Version</translation>
    </message>
    <message>
        <source>&amp;Support forum</source>
        <translation>&amp;Hilfeforum</translation>
    </message>
    <message>
        <source>&amp;Fan page</source>
        <translation>&amp;Fanseite</translation>
    </message>
    <message>
        <source>M&amp;icroblog</source>
        <translation>&amp;Mikroblog</translation>
    </message>
    <message>
        <source>&amp;Home page</source>
        <translation>&amp;Webseite</translation>
    </message>
    <message>
        <source>Answer &amp;volume:</source>
        <translation>&amp;Lautstärke:</translation>
    </message>
    <message>
        <source>Answer volume</source>
        <translation>Lautstärke der Antworten</translation>
    </message>
    <message>
        <source>La&amp;nguage:</source>
        <translation>S&amp;prache:</translation>
    </message>
    <message>
        <source>Language</source>
        <translation>Sprache</translation>
    </message>
    <message>
        <source>From the next start on</source>
        <translation>Ab dem nächsten Start</translation>
    </message>
    <message>
        <source>This shortcut does not work: another program holds it, or the desktop does not permit it. Please record another one.</source>
        <translation>Dieses Kürzel geht nicht: Ein anderes Programm hält es, oder der Desktop erlaubt es nicht. Bitte ein anderes aufnehmen.</translation>
    </message>
</context>
<context>
    <name>QMessageBox</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>popOverView</name>
    <message>
        <source>Where Velmora is</source>
        <translation>Wo Velmora ist</translation>
    </message>
    <message>
        <source>This is where Velmora is</source>
        <translation>Hier ist Velmora</translation>
    </message>
    <message>
        <source>Click the icon or press your shortcut, and say what you would like to know.</source>
        <translation>Klicken Sie auf das Symbol oder drücken Sie Ihr Tastenkürzel, und sagen Sie, was Sie wissen möchten.</translation>
    </message>
</context>
<context>
    <name>velmora::AppDelegate</name>
    <message>
        <source>This desktop has no status bar for the icon. Start Velmora again, or press your shortcut, to open the assistant.</source>
        <translation>Diese Arbeitsfläche hat keine Statusleiste für das Symbol. Starten Sie Velmora noch einmal oder drücken Sie Ihr Tastenkürzel, um den Assistenten zu öffnen.</translation>
    </message>
    <message>
        <source>Google Assistant Alert</source>
        <translation>Google-Assistant-Hinweis</translation>
    </message>
    <message>
        <source>You are not connected to internet, Please connect to use Assistant.</source>
        <translation>Es besteht keine Verbindung zum Internet. Bitte verbinden Sie sich, um den Assistenten zu verwenden.</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Network is not available.</source>
        <translation>Das Netzwerk ist nicht verfügbar.</translation>
    </message>
    <message>
        <source>Please check your internet connection and make sure internet connection is working properly.</source>
        <translation>Bitte prüfen Sie, ob Ihre Internetverbindung richtig funktioniert.</translation>
    </message>
    <message>
        <source>&amp;Sign in…</source>
        <translation>&amp;Anmelden …</translation>
    </message>
    <message>
        <source>S&amp;ettings…</source>
        <translation>&amp;Einstellungen …</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;Quit Velmora</source>
        <translation>Velmora &amp;beenden</translation>
    </message>
    <message>
        <source>&amp;Talk</source>
        <translation>&amp;Sprechen</translation>
    </message>
    <message>
        <source>&amp;Log out</source>
        <translation>&amp;Abmelden</translation>
    </message>
</context>
<context>
    <name>velmora::AssistantScreen</name>
    <message>
        <source>&amp;Settings…</source>
        <translation>&amp;Einstellungen …</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;Log out</source>
        <translation>&amp;Abmelden</translation>
    </message>
    <message>
        <source>&amp;Quit Velmora</source>
        <translation>Velmora &amp;beenden</translation>
    </message>
    <message>
        <source>Alexa Alert</source>
        <translation>Alexa-Hinweis</translation>
    </message>
    <message>
        <source>You are not connected to internet, Please connect to use Alexa.</source>
        <translation>Es besteht keine Verbindung zum Internet. Bitte verbinden Sie sich, um Alexa zu verwenden.</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>The assistant does not know you any more. Please log out and sign in again.</source>
        <translation>Der Assistent kennt Sie nicht mehr. Bitte melden Sie sich ab und wieder an.</translation>
    </message>
    <message>
        <source>The assistant is busy. Please try again in a moment.</source>
        <translation>Der Assistent ist beschäftigt. Bitte versuchen Sie es gleich noch einmal.</translation>
    </message>
    <message>
        <source>The assistant cannot be reached. Please try again in a moment.</source>
        <translation>Der Assistent ist nicht erreichbar. Bitte versuchen Sie es gleich noch einmal.</translation>
    </message>
    <message>
        <source>That did not work. Please try again.</source>
        <translation>Das hat nicht geklappt. Bitte versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>What&apos;s on your mind?</source>
        <translation>Was beschäftigt Sie?</translation>
    </message>
    <message>
        <source>Velmora is getting ready…</source>
        <translation>Velmora wird vorbereitet …</translation>
    </message>
    <message>
        <source>Listening…</source>
        <translation>Ich höre zu …</translation>
    </message>
    <message>
        <source>One moment…</source>
        <translation>Einen Moment …</translation>
    </message>
    <message>
        <source>The assistant was interrupted. Please try again.</source>
        <translation>Der Assistent wurde unterbrochen. Bitte versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>A part of Velmora is missing or damaged. Please install Velmora again.</source>
        <translation>Ein Teil von Velmora fehlt oder ist beschädigt. Bitte installieren Sie Velmora neu.</translation>
    </message>
</context>
<context>
    <name>velmora::ConversationHistory</name>
    <message>
        <source>Conversation</source>
        <translation>Gespräch</translation>
    </message>
</context>
<context>
    <name>velmora::CrashReports</name>
    <message>
        <source>Velmora ended unexpectedly the last time.</source>
        <translation>Velmora wurde beim letzten Mal unerwartet beendet.</translation>
    </message>
    <message>
        <source>A report that helps to find the cause is in %1. It tells where in the program it happened, and nothing that you said. It is not sent to anybody.</source>
        <translation>Ein Bericht, der bei der Suche nach der Ursache hilft, liegt in %1. Er sagt, an welcher Stelle des Programms es geschah, und nichts von dem, was Sie gesagt haben. Er wird niemandem gesendet.</translation>
    </message>
    <message>
        <source>Keep the Report</source>
        <translation>Bericht behalten</translation>
    </message>
    <message>
        <source>Delete the Report</source>
        <translation>Bericht löschen</translation>
    </message>
</context>
<context>
    <name>velmora::MicrophoneBox</name>
    <message>
        <source>The desktop’s default</source>
        <translation>Vorgabe der Arbeitsumgebung</translation>
    </message>
    <message>
        <source>%1 (not attached)</source>
        <translation>%1 (nicht angeschlossen)</translation>
    </message>
</context>
<context>
    <name>velmora::PreferencesWindowController</name>
    <message>
        <source>The folder of programs that start at log-in cannot be written.</source>
        <translation>Der Ordner der Programme, die beim Anmelden starten, ist nicht beschreibbar.</translation>
    </message>
    <message>
        <source>You are signed in.</source>
        <translation>Sie sind angemeldet.</translation>
    </message>
    <message>
        <source>You are not signed in.</source>
        <translation>Sie sind nicht angemeldet.</translation>
    </message>
    <message>
        <source>The desktop’s</source>
        <translation>Die der Arbeitsumgebung</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
</context>
<context>
    <name>velmora::WebView</name>
    <message>
        <source>&amp;Try again</source>
        <translation>&amp;Noch einmal versuchen</translation>
    </message>
    <message>
        <source>The page at %1 cannot be loaded.</source>
        <translation>Die Seite von %1 kann nicht geladen werden.</translation>
    </message>
    <message>
        <source>Web pages cannot be shown: the web engine is not installed.</source>
        <translation>Webseiten können nicht gezeigt werden: Die Web-Engine ist nicht installiert.</translation>
    </message>
</context>
</TS>
