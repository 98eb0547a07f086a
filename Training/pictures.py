"""The pictures of the training, all from packages of Debian, and windows out of them."""

import hashlib
import io
import os
import subprocess

import numpy as np
from PIL import Image

HERE = os.path.dirname(os.path.abspath(__file__))
BACKGROUNDS = "/usr/share/backgrounds"
CLIP_ART = "/usr/share/openclipart/svg"

PHOTOGRAPHS = [
    "Bridge_by_Sander_Klootwijk.jpg", "Kleiber_by_Lukas_Baubkus.jpg", "Picture_0B_by_freespace.jpg",
    "Picture_1A_by_freespace.jpg", "analogpattern_by_Peter_Nerlich.jpg", "free_by_Peter_Nerlich.jpg",
    "greentock_by_Peter_Nerlich.jpg", "seeding_by_Clements_Engelhardt.jpg",
    "sunset_by_Aitzol_Berasategi.jpg", "mate/abstract/Elephants_5640x3172.jpg",
    "mate/nature/Aqua.jpg", "mate/nature/Blinds.jpg", "mate/nature/Dune.jpg",
    "mate/nature/FreshFlower.jpg", "mate/nature/Garden.jpg", "mate/nature/GreenMeadow.jpg",
    "mate/nature/RainDrops.jpg", "mate/nature/TwoWings.jpg", "mate/nature/Wood.jpg",
    "mate/nature/YellowFlower.jpg",
]
# Photographs are soft at their full size: they are learned from with shorter sides of these.
PHOTOGRAPH_SIDES = (640, 900, 1300)

DRAWINGS = [
    "2004default.jpg", "Painting-Colors_by__herobrine7gamer.jpg", "city.png", "desert.png",
    "rhythm.jpg", "rollpaper.png", "string.jpg", "gnome/drool-l.svg", "gnome/field-l.svg",
    "gnome/grid-l.webp", "gnome/licorice-d.webp", "gnome/symbolic-l.webp",
]
DRAWING_SIDES = (1000,)
CLIP_ART_COUNT = 500
CLIP_ART_SIDES = (384, 640)


def held_out():
    with open(os.path.join(HERE, "held-out.txt")) as file:
        lines = [line.split(maxsplit=1) for line in file if not line.startswith("#")]
    return [(kind, name.strip()) for kind, name in lines]


def drawn(path, side):
    """A drawing in vectors on white, its longer side of `side` pixels, or None where it is broken."""
    try:
        png = subprocess.run(
            ["rsvg-convert", "--keep-aspect-ratio", f"--width={side}", f"--height={side}",
             "--background-color=white", path],
            capture_output=True, timeout=20, check=True).stdout
        return Image.open(io.BytesIO(png)).convert("RGB")
    except (subprocess.SubprocessError, OSError):
        return None


def reduced(picture, side):
    """With a shorter side of `side`, or as it is where it is smaller."""
    factor = side / min(picture.size)
    if factor >= 1:
        return picture
    return picture.resize([round(length * factor) for length in picture.size], Image.LANCZOS)


def opened(name):
    path = os.path.join(BACKGROUNDS, name)
    return drawn(path, 2000) if name.endswith(".svg") else Image.open(path).convert("RGB")


def clip_art():
    """Some of it, always the same: those whose names have the lowest checksums."""
    paths = [os.path.join(folder, name) for folder, _, names in os.walk(CLIP_ART)
             for name in names if name.endswith(".svg")]
    paths.sort(key=lambda path: hashlib.sha256(os.path.relpath(path, CLIP_ART).encode()).digest())
    found = 0
    for path in paths:
        picture = drawn(path, CLIP_ART_SIDES[found % len(CLIP_ART_SIDES)])
        if picture is None or min(picture.size) < 256 or np.asarray(picture).std() < 15:
            continue
        yield picture
        found += 1
        if found == CLIP_ART_COUNT:
            return


def load():
    """Arrays of [height, width, 3] bytes: those of photographs, those of drawings."""
    kept = {name for _, name in held_out()}
    assert not kept & set(PHOTOGRAPHS + DRAWINGS), "a picture is learned from and judged by"
    photographs = [np.asarray(reduced(opened(name), side))
                   for name in PHOTOGRAPHS for side in PHOTOGRAPH_SIDES]
    drawings = [np.asarray(reduced(opened(name), side))
                for name in DRAWINGS for side in DRAWING_SIDES]
    return photographs, drawings + [np.asarray(picture) for picture in clip_art()]


def window(pictures, side, random, tries=1):
    """A window of one of the pictures, turned and mirrored; of several tries, that with most in it."""
    picture = pictures[random.integers(len(pictures))]
    windows = []
    for _ in range(tries):
        y = random.integers(picture.shape[0] - side + 1)
        x = random.integers(picture.shape[1] - side + 1)
        windows.append(picture[y:y + side, x:x + side])
    best = max(windows, key=lambda part: part[::4, ::4].std())
    best = np.rot90(best, random.integers(4))
    return best[:, ::-1] if random.integers(2) else best
