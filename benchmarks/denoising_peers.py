#!/usr/bin/python3
"""Noise reduction beside its peers: the same noisy 8-bit pixels, the noise known to all, 8-bit results, PSNR in dB.

usage: denoising_peers.py DENOISE_IMAGE PICTURE... [--sigma 5,10,20,30,50]

Peers are scikit-image's wavelet shrinkage at its best setting (BayesShrink, luma and chroma, 16 cycle spins, the better of
db1, db2, sym4 for each picture) and OpenCV's non-local means (its strength the best of 0.8, 1 and 1.2 times the noise).
Needs python3-skimage and python3-opencv. One line a picture and noise, a Markdown row; the last rows are means.
"""

import argparse
import pathlib
import subprocess
import tempfile
import time

import cv2
import numpy
from skimage import io
from skimage.restoration import cycle_spin, denoise_wavelet


def psnr(original, picture):
    return 10 * numpy.log10(255**2 / numpy.mean((picture.astype(float) - original) ** 2))


def timed(call):
    start = time.monotonic()
    return call(), time.monotonic() - start


def ours(program, noisy, sigma):
    with tempfile.TemporaryDirectory() as folder:
        source, target = pathlib.Path(folder, "noisy.png"), pathlib.Path(folder, "cleaned.png")
        io.imsave(source, noisy, check_contrast=False)
        subprocess.run([program, source, target, "--sigma", str(sigma)], check=True, stdout=subprocess.DEVNULL)
        return io.imread(target)


def scikit_image(original, noisy, sigma):
    colour = noisy.ndim == 3
    settings = {"sigma": sigma / 255, "method": "BayesShrink", "mode": "soft", "rescale_sigma": True}
    if colour:
        settings |= {"convert2ycbcr": True, "channel_axis": -1, "sigma": [sigma / 255] * 3}
    results = []
    for wavelet in ("db1", "db2", "sym4"):
        result = cycle_spin(noisy / 255, func=denoise_wavelet, max_shifts=3, func_kw=settings | {"wavelet": wavelet},
                            channel_axis=-1 if colour else None, num_workers=1)
        results.append((255 * result).round().clip(0, 255).astype(numpy.uint8))
    return max(results, key=lambda result: psnr(original, result))


def non_local_means(original, noisy, sigma):
    clean = cv2.fastNlMeansDenoisingColored if noisy.ndim == 3 else cv2.fastNlMeansDenoising
    results = []
    for factor in (0.8, 1.0, 1.2):
        strength = (factor * sigma, factor * sigma) if noisy.ndim == 3 else (factor * sigma,)
        results.append(clean(noisy, None, *strength))
    return max(results, key=lambda result: psnr(original, result))


def main():
    arguments = argparse.ArgumentParser(usage=__doc__)
    arguments.add_argument("program")
    arguments.add_argument("pictures", nargs="+")
    arguments.add_argument("--sigma", default="5,10,20,30,50")
    options = arguments.parse_args()
    sigmas = [float(sigma) for sigma in options.sigma.split(",")]
    print("| picture | noise | QX | scikit-image wavelets | OpenCV non-local means |\n| --- | --- | --- | --- | --- |")
    rows = []
    for path in options.pictures:
        original = io.imread(path)[..., :3] if io.imread(path).ndim == 3 else io.imread(path)
        for sigma in sigmas:
            noise = numpy.random.default_rng(7).normal(0, sigma, original.shape)
            noisy = (original + noise).round().clip(0, 255).astype(numpy.uint8)
            results = [timed(lambda: ours(options.program, noisy, sigma)), timed(lambda: scikit_image(original, noisy, sigma)),
                       timed(lambda: non_local_means(original, noisy, sigma))]
            figures = [psnr(original, picture) for picture, _ in results]
            seconds = [duration / tries for (_, duration), tries in zip(results, (1, 3, 3))]
            cells = [f"{figure:.2f} ({second:.1f} s)" for figure, second in zip(figures, seconds)]
            print(f"| {pathlib.Path(path).name} | {sigma:g} | {' | '.join(cells)} |", flush=True)
            rows.append((sigma, figures))
    for sigma in sigmas:
        means = numpy.mean([figures for at, figures in rows if at == sigma], axis=0)
        print(f"| mean | {sigma:g} | {' | '.join(f'{mean:.2f}' for mean in means)} |")


if __name__ == "__main__":
    main()
