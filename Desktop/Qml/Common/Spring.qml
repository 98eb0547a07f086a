// A spring by the seconds of one swing, and the share of damping that keeps it from swinging on (1).
import QtQuick

SpringAnimation {
    property real response
    property real dampingFraction

    // The steps that Qt computes a spring in.
    readonly property real step: 0.016

    spring: step * Math.pow(2 * Math.PI / response, 2)
    damping: step * 4 * Math.PI * dampingFraction / response
    epsilon: 0.002
}
