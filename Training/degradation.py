"""What happened to a picture before somebody wants it four times as large."""

import io

import numpy as np
from PIL import Image

FACTOR = 4
# What programs reduce by. Pillow widens both by the factor, so that nothing aliases. No blurrier
# ones: a network that undoes blur sharpens what was soft from the beginning.
KERNELS = (Image.BICUBIC, Image.LANCZOS, Image.LANCZOS)
CLEAN_SHARE = 0.6


def clean(window, random):
    side = window.shape[0] // FACTOR
    kernel = KERNELS[random.integers(len(KERNELS))]
    return Image.fromarray(window).resize((side, side), kernel)


def damaged(window, random):
    picture = clean(window, random)
    if random.random() < 0.3:
        noise = random.normal(0, random.uniform(1, 8), (*picture.size, 3))
        picture = Image.fromarray(np.clip(np.asarray(picture) + noise, 0, 255).astype(np.uint8))
    if random.random() < 0.9:
        file = io.BytesIO()
        picture.save(file, "JPEG", quality=int(random.integers(30, 96)))
        picture = Image.open(file)
    return picture


def degraded(window, random):
    """[height, width, 3] bytes, a quarter as high and wide."""
    if random.random() < CLEAN_SHARE:
        return np.asarray(clean(window, random))
    return np.asarray(damaged(window, random))
