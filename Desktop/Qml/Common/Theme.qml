// The look of the application: every colour, size, radius and motion comes from here.
pragma Singleton

import QtQuick

QtObject {
    id: theme

    readonly property SystemPalette system: SystemPalette { colorGroup: SystemPalette.Active }
    // Follows the system: its windows are dark, or not.
    readonly property bool dark: forced === "dark" || (forced === ""
        && system.window.hslLightness < 0.5)
    // "light" or "dark" where a user, or a picture of the application, asks for one.
    readonly property string forced: App.appearance

    // Colours
    readonly property color background: dark ? "#101317" : "#f5f6f8"
    readonly property color surface: dark ? "#1a1e24" : "#ffffff"
    readonly property color raised: dark ? "#242a32" : "#ffffff"
    readonly property color fill: dark ? "#2a313b" : "#e8ebf0"
    readonly property color fillHovered: dark ? "#343d49" : "#dde2e9"
    readonly property color line: dark ? "#313943" : "#dfe3e9"
    readonly property color text: dark ? "#f1f3f6" : "#15181d"
    readonly property color secondaryText: dark ? "#a4adb9" : "#59626e"
    readonly property color accent: dark ? "#2f6ee4" : "#1f62d8"
    readonly property color accentHovered: dark ? "#2560cf" : "#1a55bd"
    readonly property color accentText: "#ffffff"
    readonly property color picture: dark ? "#0a0c0f" : "#e3e6eb"
    readonly property color good: dark ? "#3dbb6b" : "#1d7d43"
    readonly property color warning: dark ? "#f2c14b" : "#8a6100"
    readonly property color bad: dark ? "#ff7b72" : "#c02a2a"
    readonly property color dim: Qt.rgba(0, 0, 0, 0.45)

    // Type
    readonly property int caption: 12
    readonly property int body: 14
    readonly property int callout: 15
    readonly property int headline: 17
    readonly property int title: 22
    readonly property int display: 30

    // Spacing
    readonly property int xs: 4
    readonly property int s: 8
    readonly property int m: 12
    readonly property int l: 16
    readonly property int xl: 24
    readonly property int xxl: 40
    readonly property int controlHeight: 44

    // Radius
    readonly property int radiusS: 8
    readonly property int radiusM: 12
    readonly property int radiusL: 20

    // Motion, in milliseconds
    readonly property int quick: 120
    readonly property int calm: 240
}
