#!/usr/bin/python3
"""Trains the network of the style superSpeed: `train.py STEM` writes STEM.param and STEM.bin, and
its record to standard output."""

import copy
import io
import os
import sys
import time

import numpy as np
import torch
from PIL import Image

from degradation import FACTOR, degraded
from network import FastNetwork, write
from pictures import BACKGROUNDS, held_out, load, window

SEED = 1
STEPS = 10_000
BATCH = 12
SIDE = 40  # of a sample before the enlargement
EDGE = 4  # of a result, in pixels of the source: not judged, for it saw less
PHOTOGRAPH_SHARE = 0.7
FIRST_RATE, LAST_RATE = 2e-3, 1e-5
LEAST_ERROR = 2e-5  # a mean square that is as good as none: a level and a little
AVERAGED = 0.999  # of the weights' moving average, which is what is kept
LOSS_SCALE = 0.05  # brings most gradients below the length they are clipped to
# Brightness is what eyes see detail in.
TO_YCC = torch.tensor([[0.299, 0.587, 0.114], [-0.169, -0.331, 0.5], [0.5, -0.419, -0.081]])
YCC_WEIGHTS = torch.tensor([1.0, 0.3, 0.3]).view(1, 3, 1, 1)


def planes(pictures):
    """Bytes of [height, width, 3] each -> one tensor of [batch, 3, height, width], 0 to 1."""
    return torch.from_numpy(np.stack(pictures).transpose(0, 3, 1, 2).astype(np.float32) / 255)


def batch(photographs, drawings, random):
    truths, sources = [], []
    for _ in range(BATCH):
        if random.random() < PHOTOGRAPH_SHARE:
            truth = window(photographs, FACTOR * SIDE, random)
        else:  # much of a drawing is empty
            truth = window(drawings, FACTOR * SIDE, random, tries=2)
        truths.append(truth)
        sources.append(degraded(np.ascontiguousarray(truth), random))
    return planes(sources), planes(truths)


def loss_of(result, truth):
    """Falls as the peak signal-to-noise ratio of each window by itself rises, so that a smooth
    photograph counts as much as a drawing full of edges."""
    inner = slice(EDGE * FACTOR, -EDGE * FACTOR)
    difference = torch.einsum("ij,bjyx->biyx", TO_YCC, (result - truth)[:, :, inner, inner])
    errors = (difference ** 2 * YCC_WEIGHTS).mean((1, 2, 3))
    return LOSS_SCALE * torch.log(errors + LEAST_ERROR).mean()


def brightness(picture):
    return np.asarray(picture, np.float64) @ np.array([65.481, 128.553, 24.966]) / 255 + 16


def decibels(result, truth):
    inner = slice(8, -8)
    difference = (brightness(result) - brightness(truth))[inner, inner]
    return 10 * np.log10(255 ** 2 / np.mean(difference ** 2))


def judge(network):
    """Prints what pictures that were not learned from gain over Lanczos's filter, in dB."""
    gains = {}
    for kind, name in held_out():
        whole = Image.open(os.path.join(BACKGROUNDS, name)).convert("RGB")
        whole = whole.reduce(max(1, min(whole.size) // 720))
        size = [min(1024, length) // FACTOR * FACTOR for length in whole.size]
        left, top = (whole.width - size[0]) // 2, (whole.height - size[1]) // 2
        truth = whole.crop((left, top, left + size[0], top + size[1]))
        small = truth.resize([length // FACTOR for length in size], Image.LANCZOS)
        file = io.BytesIO()
        small.save(file, "JPEG", quality=60)
        for state, source in (("clean", small), ("damaged", Image.open(file).convert("RGB"))):
            plain = decibels(source.resize(truth.size, Image.LANCZOS), truth)
            with torch.no_grad():
                result = network(planes([np.asarray(source)]))[0].clamp(0, 1) * 255
            ours = decibels(result.round().permute(1, 2, 0).numpy(), truth)
            gains.setdefault((kind, state), []).append((plain, ours))
    for (kind, state), pairs in gains.items():
        plain, ours = np.mean(pairs, axis=0)
        print(f"{kind}s, {state}: Lanczos {plain:.2f}, network {ours:.2f}, {ours - plain:+.2f} dB")


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    torch.set_num_threads(os.cpu_count())
    torch.manual_seed(SEED)
    random = np.random.default_rng(SEED)
    photographs, drawings = load()
    print(f"{len(photographs)} photographs, {len(drawings)} drawings", flush=True)
    network = FastNetwork()
    average = copy.deepcopy(network)
    print(f"{network.weights()} weights", flush=True)
    optimizer = torch.optim.Adam(network.parameters(), FIRST_RATE)
    rates = torch.optim.lr_scheduler.CosineAnnealingLR(optimizer, STEPS, LAST_RATE)
    begin, losses = time.monotonic(), []
    for step in range(1, STEPS + 1):
        source, truth = batch(photographs, drawings, random)
        loss = loss_of(network(source), truth)
        optimizer.zero_grad()
        loss.backward()
        torch.nn.utils.clip_grad_norm_(network.parameters(), 0.5)
        optimizer.step()
        rates.step()
        with torch.no_grad():
            kept = min(AVERAGED, step / (step + 10))
            for mean, new in zip(average.parameters(), network.parameters()):
                mean.lerp_(new, 1 - kept)
        losses.append(loss.item())
        if step % 500 == 0:
            minutes = (time.monotonic() - begin) / 60
            print(f"step {step}, {minutes:.1f} min: loss {np.mean(losses):.5f}", flush=True)
            losses = []
        if step % 2000 == 0:
            judge(average)
    for parameter in average.parameters():
        if parameter.dim() == 4:
            parameter.data = parameter.data.half().float()
    print("as written:")
    judge(average)
    write(average, sys.argv[1])


main()
