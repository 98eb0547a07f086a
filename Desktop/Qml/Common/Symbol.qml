// A drawn sign, 24 by 24 units large, in one colour.
import QtQuick
import QtQuick.Window

Item {
    id: symbol

    property string name
    property color color: Theme.text
    property real size: 20
    /// What is closed up to the first "z" as a plate ("Z" closes others before); the lines after it
    /// on the plate, in the background's colour.
    property bool filled: false

    implicitWidth: size
    implicitHeight: size

    readonly property var paths: ({
        "photo": "M3 6a2 2 0 0 1 2-2h14a2 2 0 0 1 2 2v12a2 2 0 0 1-2 2H5a2 2 0 0 1-2-2z M3 17l5-5 4 4 3-3 6 6 M15 9.5a1.2 1.2 0 1 0 2.4 0a1.2 1.2 0 1 0-2.4 0",
        "photos": "M6 3h13a2 2 0 0 1 2 2v10 M3 8a2 2 0 0 1 2-2h11a2 2 0 0 1 2 2v11a2 2 0 0 1-2 2H5a2 2 0 0 1-2-2z M3 18l4-4 4 4 3-3 4 4",
        "folder": "M3 7a2 2 0 0 1 2-2h4l2 2h8a2 2 0 0 1 2 2v9a2 2 0 0 1-2 2H5a2 2 0 0 1-2-2z",
        "film": "M4 5h16v14H4z M8 5v14 M16 5v14 M4 9h4 M4 15h4 M16 9h4 M16 15h4",
        "gear": "M12 9a3 3 0 1 0 0 6a3 3 0 1 0 0-6 M12 3v3 M12 18v3 M3 12h3 M18 12h3 M5.6 5.6l2.2 2.2 M16.2 16.2l2.2 2.2 M5.6 18.4l2.2-2.2 M16.2 7.8l2.2-2.2",
        "share": "M12 15V3 M8 7l4-4 4 4 M5 11v8a2 2 0 0 0 2 2h10a2 2 0 0 0 2-2v-8",
        "save": "M12 3v12 M8 11l4 4 4-4 M5 17v2a2 2 0 0 0 2 2h10a2 2 0 0 0 2-2v-2",
        "wand": "M4 20L15 9 M14 4v3 M12.5 5.5h3 M19 8v3 M17.5 9.5h3 M19 15v2 M18 16h2",
        "back": "M15 5l-7 7 7 7",
        "forward": "M9 5l7 7-7 7",
        "down": "M5 9l7 7 7-7",
        "check": "M5 12.5l4.5 4.5L19 7",
        "checkSquare": "M6 3h12a3 3 0 0 1 3 3v12a3 3 0 0 1-3 3H6a3 3 0 0 1-3-3V6a3 3 0 0 1 3-3z M7.5 12.3l3.2 3.2 5.8-6.5",
        "close": "M6 6l12 12 M18 6L6 18",
        "info": "M12 3a9 9 0 1 0 0 18a9 9 0 1 0 0-18 M12 11v6 M12 7.4v.2",
        "crop": "M7 2v15h15 M2 7h15v15",
        "rotateRight": "M19 12a7 7 0 1 1-2.5-5.4L19 9 M19 4v5h-5",
        "rotateLeft": "M5 12a7 7 0 1 0 2.5-5.4L5 9 M5 4v5h5",
        "flip": "M12 3v18 M9 7L3 17h6z M15 7l6 10h-6z",
        "reset": "M4 12a8 8 0 1 0 3-6.2 M4 4v4h4",
        "mail": "M3 6h18v12H3z M3 7l9 7 9-7",
        "bubble": "M4 5h16v11H10l-5 4v-4H4z",
        // Of the maker's other applications, by their names in Quillmere/Models/Services/MoreApp.h.
        "more_app_fernbook": "M5 18V6a2 2 0 0 1 2-2h11v16H7a2 2 0 0 1 0-4h11 M11.5 14V7 M11.5 9.5l3-2 M11.5 9.5l-3-2 M11.5 13l3-2 M11.5 13l-3-2",
        "more_app_drift_timer": "M12 5a8 8 0 1 0 0 16a8 8 0 1 0 0-16 M12 9v4l3 2 M9.5 2h5",
        "more_app_palette_pond": "M12 4c-5 0-9 3.4-9 7.8S6.5 20 10 20c1.6 0 1.5-1.3 1.1-2.2c-.6-1.2.2-2.4 1.6-2.4H16c3 0 5-1.6 5-4.4C21 7 17 4 12 4z M7.5 11.4v.2 M10.6 8v.2 M15 8.4v.2",
        "more_app_lantern_reader": "M8 8h8v10H8z M6.5 21h11 M8 18l-1.5 3 M16 18l1.5 3 M8 8l2-3h4l2 3 M12 5V2.5 M12 11v4",
        "more_app_paper_sundial": "M4 17c0 2 3.6 3 8 3s8-1 8-3-3.6-3-8-3-8 1-8 3z M11 17V5l5.5 12 M4.5 6l1.5 1.5 M19 5l-1.5 1.5 M15 2.5l-.5 1.6",
        "more_app_reed_tuner": "M9 3v7a3 3 0 0 0 6 0V3 M12 13v8 M5 5c-1.4 2-1.4 4.5 0 6.5 M19 5c1.4 2 1.4 4.5 0 6.5",
        "more_app_moss_ledger": "M5 3h14v18H5z M9 3v18 M12 8h4 M12 12h4 M12 16h4",
        "more_app_cloud_shelf": "M7 13a3.5 3.5 0 0 1 .4-7A5 5 0 0 1 17 7a3 3 0 0 1 0 6z M3 17h18 M6 17v3 M18 17v3",
        "apps": "M4 4h6v6H4z M14 4h6v6h-6z M4 14h6v6H4z M14 14h6v6h-6z",
        "pencil": "M4 20l1-4L16 5l3 3L8 19z M14 7l3 3",
        "camera": "M5 8h2.5L9 5.5h6L16.5 8H19a2 2 0 0 1 2 2v7a2 2 0 0 1-2 2H5a2 2 0 0 1-2-2v-7a2 2 0 0 1 2-2z M12 10a3 3 0 1 0 0 6a3 3 0 1 0 0-6",
        "copy": "M8 8h12v12H8z M4 16V4h12",
        "open": "M14 4h6v6 M20 4l-9 9 M18 14v5a1 1 0 0 1-1 1H5a1 1 0 0 1-1-1V7a1 1 0 0 1 1-1h5",
        "people": "M9 5a3 3 0 1 0 0 6a3 3 0 1 0 0-6Z M3 20c0-4 3-6 6-6s6 2 6 6Z M16.5 6a2.5 2.5 0 1 1 0 5Z M17.5 20c0-2.5-.6-4.2-1.8-5.5c3-.8 5.3 1.8 5.3 5.5z",
        "play": "M7 4l13 8-13 8z",
        "pause": "M8 5v14 M16 5v14",
        "sound": "M4 9h4l5-4v14l-5-4H4z M16 9a4 4 0 0 1 0 6",
        "mute": "M4 9h4l5-4v14l-5-4H4z M16 9l5 6 M21 9l-5 6",
        "loop": "M17 3l3 3-3 3 M4 11V9a3 3 0 0 1 3-3h13 M7 21l-3-3 3-3 M20 13v2a3 3 0 0 1-3 3H4",
        "more": "M5 12h.1 M12 12h.1 M19 12h.1",
        "calendar": "M4 6h16v14H4z M4 10h16 M8 3v4 M16 3v4",
        "place": "M12 21c-4-5-6-8-6-11a6 6 0 0 1 12 0c0 3-2 6-6 11z M12 8a2 2 0 1 0 0 4a2 2 0 1 0 0-4"
    })

    function drawn() {
        const ink = Qt.rgba(color.r, color.g, color.b, 1)
        const strokes = (path, tint, fill) => '<path d="' + path + '" fill="' + fill + '" stroke="' + tint
            + '" stroke-width="' + (name === "more" ? 3 : 1.8) + '"/>'
        if (!filled) return strokes(paths[name], ink, "none")
        const end = paths[name].indexOf("z") + 1
        return strokes(paths[name].slice(0, end), ink, ink)
            + strokes(paths[name].slice(end), Theme.background, "none")
    }

    // A picture and not a shape: without a graphics card, shapes are not cut by what clips them.
    Image {
        anchors.fill: parent
        sourceSize: Qt.size(Math.ceil(symbol.size * Screen.devicePixelRatio),
                            Math.ceil(symbol.size * Screen.devicePixelRatio))
        source: symbol.name === "" ? "" : "data:image/svg+xml;utf8,"
            + encodeURIComponent('<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24"'
                + ' stroke-linecap="round" stroke-linejoin="round">' + drawn() + '</svg>')
        opacity: symbol.color.a
    }
}
