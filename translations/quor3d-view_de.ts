<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>QUORDataType</name>
    <message>
        <source>Not available</source>
        <translation>Nicht verfügbar</translation>
    </message>
    <message>
        <source>Reflectivity</source>
        <translation>Reflektivität</translation>
    </message>
    <message>
        <source>Spectrum width</source>
        <translation>Spektralbreite</translation>
    </message>
    <message>
        <source>Rainfall rate</source>
        <translation>Regenrate</translation>
    </message>
    <message>
        <source>Radial velocity</source>
        <translation>Radialgeschwindigkeit</translation>
    </message>
</context>
<context>
    <name>QUORDisplayState</name>
    <message>
        <source>Radar</source>
        <translation>Radar</translation>
    </message>
    <message>
        <source>Outline and heights</source>
        <translation>Umriss und Höhen</translation>
    </message>
    <message>
        <source>3D product</source>
        <translation>3D-Produkt</translation>
    </message>
    <message>
        <source>2D product</source>
        <translation>2D-Produkt</translation>
    </message>
    <message>
        <source>Map</source>
        <translation>Karte</translation>
    </message>
    <message>
        <source>Terrain</source>
        <translation>Gelände</translation>
    </message>
    <message>
        <source>Latitudes and longitudes</source>
        <translation>Breiten und Längen</translation>
    </message>
    <message>
        <source>Range rings</source>
        <translation>Entfernungsringe</translation>
    </message>
    <message>
        <source>Places</source>
        <translation>Orte</translation>
    </message>
</context>
<context>
    <name>QUORFrameLoader</name>
    <message>
        <source>the file is gone or holds another product by now</source>
        <translation>die Datei ist fort oder hält inzwischen ein anderes Produkt</translation>
    </message>
</context>
<context>
    <name>QUORLayersPanel</name>
    <message>
        <source>Layer</source>
        <translation>Ebene</translation>
    </message>
    <message>
        <source>Opacity</source>
        <translation>Deckkraft</translation>
    </message>
    <message>
        <source>Opacity of %1</source>
        <translation>Deckkraft von %1</translation>
    </message>
</context>
<context>
    <name>QUORPlot</name>
    <message>
        <source>along the line, km</source>
        <translation>entlang der Linie, km</translation>
    </message>
    <message>
        <source>height, km</source>
        <translation>Höhe, km</translation>
    </message>
    <message>
        <source>Nothing chosen yet</source>
        <translation>Noch nichts gewählt</translation>
    </message>
</context>
<context>
    <name>QUORPresetsPanel</name>
    <message>
        <source>&amp;Show</source>
        <translation>&amp;Zeigen</translation>
    </message>
    <message>
        <source>Save this view &amp;as…</source>
        <translation>Diese &amp;Ansicht speichern …</translation>
    </message>
    <message>
        <source>Re&amp;name…</source>
        <translation>&amp;Umbenennen …</translation>
    </message>
    <message>
        <source>&amp;Delete…</source>
        <translation>&amp;Löschen …</translation>
    </message>
    <message>
        <source>What would the service dra&amp;w?</source>
        <translation>&amp;Was würde der Dienst zeichnen?</translation>
    </message>
    <message>
        <source>There is no preset “%1” any more.</source>
        <translation>Die Voreinstellung „%1“ gibt es nicht mehr.</translation>
    </message>
    <message>
        <source>There is a preset “%1” already.</source>
        <translation>Eine Voreinstellung „%1“ gibt es schon.</translation>
    </message>
    <message>
        <source>A preset cannot be called “%1”.</source>
        <translation>Eine Voreinstellung kann nicht „%1“ heißen.</translation>
    </message>
    <message>
        <source>The settings file could not be written; the log says why.</source>
        <translation>Die Datei der Einstellungen konnte nicht geschrieben werden; das Protokoll sagt, warum.</translation>
    </message>
    <message>
        <source>Save the view</source>
        <translation>Ansicht speichern</translation>
    </message>
    <message>
        <source>Name of the preset:</source>
        <translation>Name der Voreinstellung:</translation>
    </message>
    <message>
        <source>Replace the preset “%1”?</source>
        <translation>Die Voreinstellung „%1“ ersetzen?</translation>
    </message>
    <message>
        <source>Rename the preset</source>
        <translation>Voreinstellung umbenennen</translation>
    </message>
    <message>
        <source>New name:</source>
        <translation>Neuer Name:</translation>
    </message>
    <message>
        <source>Delete the preset</source>
        <translation>Voreinstellung löschen</translation>
    </message>
    <message>
        <source>Delete the preset “%1”? The service may be using it.</source>
        <translation>Die Voreinstellung „%1“ löschen? Der Dienst benutzt sie vielleicht.</translation>
    </message>
</context>
<context>
    <name>QUORReadingPanel</name>
    <message>
        <source>Switch reading on and drag the cross-hair through the volume.</source>
        <translation>Das Ablesen einschalten und das Fadenkreuz durch das Volumen ziehen.</translation>
    </message>
    <message>
        <source>&amp;Profile</source>
        <translation>&amp;Profil</translation>
    </message>
    <message>
        <source>&amp;Section</source>
        <translation>&amp;Schnitt</translation>
    </message>
    <message>
        <source>outside</source>
        <translation>außerhalb</translation>
    </message>
    <message>
        <source>nothing measured</source>
        <translation>nichts gemessen</translation>
    </message>
    <message>
        <source>Height: %1</source>
        <translation>Höhe: %1</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Below, %1 (%2): %3</source>
        <translation>Darunter, %1 (%2): %3</translation>
    </message>
</context>
<context>
    <name>QUORSceneView</name>
    <message>
        <source>Scene</source>
        <translation>Szene</translation>
    </message>
</context>
<context>
    <name>QUORServicePicture</name>
    <message>
        <source>The tool “%1” cannot be started: %2</source>
        <translation>Das Programm „%1“ lässt sich nicht starten: %2</translation>
    </message>
    <message>
        <source>Cancelled.</source>
        <translation>Abgebrochen.</translation>
    </message>
    <message>
        <source>The tool gave no picture.</source>
        <translation>Das Programm lieferte kein Bild.</translation>
    </message>
    <message>
        <source>The picture cannot be read: %1</source>
        <translation>Das Bild ist nicht lesbar: %1</translation>
    </message>
</context>
<context>
    <name>QUORSurfacesPanel</name>
    <message>
        <source>&amp;Add a surface</source>
        <translation>&amp;Fläche hinzufügen</translation>
    </message>
    <message>
        <source>Surfaces</source>
        <translation>Flächen</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Volumen</translation>
    </message>
    <message>
        <source>&amp;Drawn as</source>
        <translation>&amp;Gezeichnet als</translation>
    </message>
    <message>
        <source>Colour &amp;scale</source>
        <translation>&amp;Farbskala</translation>
    </message>
    <message>
        <source>&amp;Keep for the service</source>
        <translation>Für den &amp;Dienst behalten</translation>
    </message>
    <message>
        <source>Stores this for the product in the settings that the service reads</source>
        <translation>Speichert dies für das Produkt in den Einstellungen, die der Dienst liest</translation>
    </message>
    <message>
        <source>As sto&amp;red</source>
        <translation>Wie gespei&amp;chert</translation>
    </message>
    <message>
        <source>&amp;From</source>
        <translation>&amp;Von</translation>
    </message>
    <message>
        <source>Opacity there</source>
        <translation>Deckkraft dort</translation>
    </message>
    <message>
        <source>&amp;To</source>
        <translation>&amp;Bis</translation>
    </message>
    <message>
        <source>Value of surface %1</source>
        <translation>Wert der Fläche %1</translation>
    </message>
    <message>
        <source>Opacity of surface %1</source>
        <translation>Deckkraft der Fläche %1</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
</context>
<context>
    <name>QUORTimePanel</name>
    <message>
        <source>&amp;Play</source>
        <translation>Ab&amp;spielen</translation>
    </message>
    <message>
        <source>&amp;Follow the newest</source>
        <translation>Dem Neuesten &amp;folgen</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source> a second</source>
        <translation> je Sekunde</translation>
    </message>
    <message>
        <source>&amp;Back</source>
        <translation>&amp;Zurück</translation>
    </message>
    <message>
        <source>&amp;On</source>
        <translation>&amp;Weiter</translation>
    </message>
    <message>
        <source>&amp;Site</source>
        <translation>S&amp;tandort</translation>
    </message>
    <message>
        <source>&amp;Quantity</source>
        <translation>&amp;Größe</translation>
    </message>
</context>
<context>
    <name>QUORViewerExport</name>
    <message>
        <source>Nothing is written into a directory of products: %1</source>
        <translation>In ein Verzeichnis von Produkten wird nichts geschrieben: %1</translation>
    </message>
    <message>
        <source>There is no picture yet.</source>
        <translation>Es gibt noch kein Bild.</translation>
    </message>
    <message>
        <source>%1 could not be written: no pictures of the kind “%2” can be written here.</source>
        <translation>%1 konnte nicht geschrieben werden: Bilder der Art „%2“ können hier nicht geschrieben werden.</translation>
    </message>
    <message>
        <source>%1 could not be written: %2</source>
        <translation>%1 konnte nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>%1 could not be written.</source>
        <translation>%1 konnte nicht geschrieben werden.</translation>
    </message>
    <message>
        <source>Cancelled.</source>
        <translation>Abgebrochen.</translation>
    </message>
</context>
<context>
    <name>QUORViewerSession</name>
    <message>
        <source>its scene could not be built</source>
        <translation>seine Szene konnte nicht gebaut werden</translation>
    </message>
</context>
<context>
    <name>QUORViewerWindow</name>
    <message>
        <source>Moving pictures (*.webp *.mp4 *.gif)</source>
        <translation>Bewegte Bilder (*.webp *.mp4 *.gif)</translation>
    </message>
    <message>
        <source>%1 is not complete: it may still be on its way.</source>
        <translation>%1 ist nicht vollständig: vielleicht noch unterwegs.</translation>
    </message>
    <message>
        <source>%1 is no product file. Data in open formats become products with “quor3d import”.</source>
        <translation>%1 ist keine Produktdatei. Daten in offenen Formaten werden mit „quor3d import“ zu Produkten.</translation>
    </message>
    <message>
        <source>%1 cannot be read.</source>
        <translation>%1 ist nicht lesbar.</translation>
    </message>
    <message>
        <source>%1 is a 2D product (%2); open a volume, which shows it beneath.</source>
        <translation>%1 ist ein 2D-Produkt (%2); ein Volumen öffnen, das es darunter zeigt.</translation>
    </message>
    <message>
        <source>Tools</source>
        <translation>Werkzeuge</translation>
    </message>
    <message>
        <source>Radar volumes</source>
        <translation>Radarvolumen</translation>
    </message>
    <message>
        <source>Nothing can be drawn here, OpenGL is not usable: %1</source>
        <translation>Hier kann nichts gezeichnet werden, OpenGL ist nicht benutzbar: %1</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Times</source>
        <translation>Zeiten</translation>
    </message>
    <message>
        <source>Presets</source>
        <translation>Voreinstellungen</translation>
    </message>
    <message>
        <source>Layers</source>
        <translation>Ebenen</translation>
    </message>
    <message>
        <source>3D product</source>
        <translation>3D-Produkt</translation>
    </message>
    <message>
        <source>Reading</source>
        <translation>Ablesen</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Open a product…</source>
        <translation>Ein Produkt ö&amp;ffnen …</translation>
    </message>
    <message>
        <source>Open a product</source>
        <translation>Ein Produkt öffnen</translation>
    </message>
    <message>
        <source>Open a &amp;directory…</source>
        <translation>Ein &amp;Verzeichnis öffnen …</translation>
    </message>
    <message>
        <source>Ctrl+Shift+O</source>
        <translation>Ctrl+Shift+O</translation>
    </message>
    <message>
        <source>Open a directory</source>
        <translation>Ein Verzeichnis öffnen</translation>
    </message>
    <message>
        <source>Save the &amp;picture…</source>
        <translation>Das &amp;Bild speichern …</translation>
    </message>
    <message>
        <source>Ctrl+E</source>
        <translation>Ctrl+E</translation>
    </message>
    <message>
        <source>Save the times as a &amp;loop…</source>
        <translation>Die Zeiten als &amp;Schleife speichern …</translation>
    </message>
    <message>
        <source>Ctrl+Shift+E</source>
        <translation>Ctrl+Shift+E</translation>
    </message>
    <message>
        <source>Save a &amp;flight round the scene…</source>
        <translation>Einen &amp;Rundflug um die Szene speichern …</translation>
    </message>
    <message>
        <source>Ctrl+Shift+F</source>
        <translation>Ctrl+Shift+F</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>From &amp;above</source>
        <translation>Von &amp;oben</translation>
    </message>
    <message>
        <source>Ctrl+1</source>
        <translation>Ctrl+1</translation>
    </message>
    <message>
        <source>From the &amp;south</source>
        <translation>Von &amp;Süden</translation>
    </message>
    <message>
        <source>Ctrl+2</source>
        <translation>Ctrl+2</translation>
    </message>
    <message>
        <source>From the &amp;west</source>
        <translation>Von &amp;Westen</translation>
    </message>
    <message>
        <source>Ctrl+3</source>
        <translation>Ctrl+3</translation>
    </message>
    <message>
        <source>From the &amp;north</source>
        <translation>Von &amp;Norden</translation>
    </message>
    <message>
        <source>Ctrl+4</source>
        <translation>Ctrl+4</translation>
    </message>
    <message>
        <source>From the &amp;east</source>
        <translation>Von Os&amp;ten</translation>
    </message>
    <message>
        <source>Ctrl+5</source>
        <translation>Ctrl+5</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Fit</source>
        <translation>&amp;Einpassen</translation>
    </message>
    <message>
        <source>Ctrl+0</source>
        <translation>Ctrl+0</translation>
    </message>
    <message>
        <source>&amp;Undo the movement</source>
        <translation>Bewegung &amp;zurücknehmen</translation>
    </message>
    <message>
        <source>&amp;Redo the movement</source>
        <translation>Bewegung &amp;wiederholen</translation>
    </message>
    <message>
        <source>&amp;Tools</source>
        <translation>&amp;Werkzeuge</translation>
    </message>
    <message>
        <source>&amp;Night</source>
        <translation>&amp;Nacht</translation>
    </message>
    <message>
        <source>Ctrl+N</source>
        <translation>Ctrl+N</translation>
    </message>
    <message>
        <source>Read &amp;values</source>
        <translation>Werte &amp;ablesen</translation>
    </message>
    <message>
        <source>Ctrl+V</source>
        <translation>Ctrl+V</translation>
    </message>
    <message>
        <source>Draw a &amp;section</source>
        <translation>Einen &amp;Schnitt ziehen</translation>
    </message>
    <message>
        <source>Ctrl+L</source>
        <translation>Ctrl+L</translation>
    </message>
    <message>
        <source>Section &amp;from the point</source>
        <translation>Schnitt &amp;vom Punkt</translation>
    </message>
    <message>
        <source>Alt+Home</source>
        <translation>Alt+Home</translation>
    </message>
    <message>
        <source>Section &amp;to the point</source>
        <translation>Schnitt &amp;zum Punkt</translation>
    </message>
    <message>
        <source>Alt+End</source>
        <translation>Alt+End</translation>
    </message>
    <message>
        <source>&amp;Play</source>
        <translation>Ab&amp;spielen</translation>
    </message>
    <message>
        <source>Ctrl+Space</source>
        <translation>Ctrl+Space</translation>
    </message>
    <message>
        <source>&amp;Back in time</source>
        <translation>In der Zeit z&amp;urück</translation>
    </message>
    <message>
        <source>Ctrl+PgUp</source>
        <translation>Ctrl+PgUp</translation>
    </message>
    <message>
        <source>&amp;On in time</source>
        <translation>In der Zeit &amp;weiter</translation>
    </message>
    <message>
        <source>Ctrl+PgDown</source>
        <translation>Ctrl+PgDown</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>Ab&amp;brechen</translation>
    </message>
    <message>
        <source>Esc</source>
        <translation>Esc</translation>
    </message>
    <message>
        <source>&amp;Panels</source>
        <translation>&amp;Bereiche</translation>
    </message>
    <message>
        <source>Height factor</source>
        <translation>Höhenfaktor</translation>
    </message>
    <message>
        <source>Heights</source>
        <translation>Höhen</translation>
    </message>
    <message>
        <source>× %1</source>
        <translation>× %1</translation>
    </message>
    <message>
        <source>%1 cannot be shown: %2</source>
        <translation>%1 kann nicht gezeigt werden: %2</translation>
    </message>
    <message>
        <source>Stored for the service.</source>
        <translation>Für den Dienst gespeichert.</translation>
    </message>
    <message>
        <source>Written: %1</source>
        <translation>Geschrieben: %1</translation>
    </message>
    <message>
        <source>Drawing the loop: %1 of %2</source>
        <translation>Die Schleife wird gezeichnet: %1 von %2</translation>
    </message>
    <message>
        <source>%1 does not exist.</source>
        <translation>%1 gibt es nicht.</translation>
    </message>
    <message>
        <source>%1 holds no volume yet; those that come are shown.</source>
        <translation>%1 enthält noch kein Volumen; was kommt, wird gezeigt.</translation>
    </message>
    <message>
        <source>%1 is not among the products of its directory: another file there holds the same product.</source>
        <translation>%1 ist nicht unter den Produkten seines Verzeichnisses: eine andere Datei dort enthält dasselbe Produkt.</translation>
    </message>
    <message>
        <source>Open a product or a directory of products.</source>
        <translation>Ein Produkt oder ein Verzeichnis von Produkten öffnen.</translation>
    </message>
    <message>
        <source>%1 – Radar volumes</source>
        <translation>%1 – Radarvolumen</translation>
    </message>
    <message>
        <source>, with %1</source>
        <translation>, mit %1</translation>
    </message>
    <message>
        <source>Presets stored for the service.</source>
        <translation>Voreinstellungen für den Dienst gespeichert.</translation>
    </message>
    <message>
        <source>The service’s picture, %1 × %2</source>
        <translation>Das Bild des Dienstes, %1 × %2</translation>
    </message>
    <message>
        <source>Save the picture</source>
        <translation>Das Bild speichern</translation>
    </message>
    <message>
        <source>Pictures (*.png *.jpg *.tif)</source>
        <translation>Bilder (*.png *.jpg *.tif)</translation>
    </message>
    <message>
        <source>Save the times as a loop</source>
        <translation>Die Zeiten als Schleife speichern</translation>
    </message>
    <message>
        <source>How many of the newest times:</source>
        <translation>Wie viele der neuesten Zeiten:</translation>
    </message>
    <message>
        <source>Save a flight round the scene</source>
        <translation>Einen Rundflug um die Szene speichern</translation>
    </message>
</context>
</TS>
