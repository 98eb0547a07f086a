"""The network, and how it is written for the compiler of networks."""

import numpy as np
import torch
from torch import nn

FACTOR = 4
CHANNELS = 32
HIDDEN = 4  # convolutions before the last


class FastNetwork(nn.Module):
    """Four convolutions, and a fifth over their features and the picture itself, whose outputs
    are the 16 pixels of each channel. Where the picture enters again, it begins as an enlargement
    by nearest pixels, so that all else is a correction."""

    def __init__(self):
        super().__init__()
        self.hidden = nn.ModuleList(
            nn.Conv2d(inputs, CHANNELS, 3, padding=1) for inputs in (3, *[CHANNELS] * (HIDDEN - 1)))
        self.slopes = nn.ModuleList(nn.PReLU(CHANNELS, init=0.2) for _ in self.hidden)
        phases = FACTOR * FACTOR
        self.last = nn.Conv2d(CHANNELS + 3, 3 * phases, 3, padding=1)
        with torch.no_grad():
            self.last.weight.mul_(0.1)
            self.last.bias.zero_()
            for channel in range(3):
                outputs = slice(channel * phases, (channel + 1) * phases)
                self.last.weight[outputs, CHANNELS + channel, 1, 1] += 1

    def forward(self, picture):
        """[batch, 3, height, width] of 0 to 1 -> [batch, 3, 4 height, 4 width]."""
        features = picture
        for convolution, slope in zip(self.hidden, self.slopes):
            features = slope(convolution(features))
        both = torch.cat([features, picture], 1)
        return nn.functional.pixel_shuffle(self.last(both), FACTOR)

    def weights(self):
        return sum(parameter.numel() for parameter in self.parameters())


HALF_PRECISION_TAG = 0x01306B47


def write(network, stem):
    """STEM.param, the graph as text, and STEM.bin, weights in half precision, the rest in single."""
    layers = ["Input input 0 1 input", "Split split 1 2 input picture again"]
    data = []

    def convolution(name, layer, source, target):
        weights = layer.weight.detach().numpy().astype("<f2")
        layers.append(f"Convolution {name} 1 1 {source} {target} 0={weights.shape[0]} 1=3 4=1 5=1 "
                      f"6={weights.size}")
        data.append(np.uint32(HALF_PRECISION_TAG).tobytes() + weights.tobytes())
        data.append(layer.bias.detach().numpy().astype("<f4").tobytes())

    source = "picture"
    for n, (layer, slope) in enumerate(zip(network.hidden, network.slopes)):
        convolution(f"convolution{n}", layer, source, f"plain{n}")
        layers.append(f"PReLU activation{n} 1 1 plain{n} features{n} 0={CHANNELS}")
        data.append(slope.weight.detach().numpy().astype("<f4").tobytes())
        source = f"features{n}"
    layers.append(f"Concat both 2 1 {source} again both 0=0")
    convolution("last", network.last, "both", "phases")
    layers.append(f"PixelShuffle enlarged 1 1 phases output 0={FACTOR}")
    assert all(len(part) % 4 == 0 for part in data)  # so nothing has to be aligned
    with open(stem + ".param", "w") as file:
        file.write(f"7767517\n{len(layers)} {len(layers) + 1}\n" + "\n".join(layers) + "\n")
    with open(stem + ".bin", "wb") as file:
        file.write(b"".join(data))
