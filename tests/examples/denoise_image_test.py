"""denoise_image at its front door: pictures in and out by independent readers and writers, and every way to fail.

The program under test is named by the environment variable DENOISE_IMAGE."""

import io
import json
import os
import pathlib
import resource
import signal
import struct
import subprocess
import time
import zlib

import numpy
import png
import pytest
import tifffile
from PIL import Image, PngImagePlugin

PROGRAM = os.environ["DENOISE_IMAGE"]
DATA = pathlib.Path(__file__).resolve().parents[2] / "examples" / "data"
SAME = ("--method", "given", "--threshold", "0", "--sigma", "1")  # a threshold of nothing gives the picture back


@pytest.fixture(autouse=True)
def in_scratch_folder(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)


def run(*arguments, **options):
    return subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, text=True, stdin=subprocess.DEVNULL, **options)


def succeeds(*arguments, **options):
    result = run(*arguments, **options)
    assert (result.returncode, result.stderr) == (0, "")
    return result.stdout


def refuses(words, *arguments, **options):
    before = {path: path.stat().st_mtime_ns for path in pathlib.Path().rglob("*")}
    result = run(*arguments, **options)
    assert result.returncode == 1 and result.stdout == ""
    assert len(result.stderr.splitlines()) == 1 and words in result.stderr, result.stderr
    assert before == {path: path.stat().st_mtime_ns for path in pathlib.Path().rglob("*")}, "a file changed"


def samples(height, width, channels, bits, seed=1):
    """Smooth colours, so that JPEG and thresholds do them little harm, under some noise; alpha in blocks."""
    y, x, c = numpy.mgrid[0:height, 0:width, 0:channels]
    picture = 120 + 60 * numpy.sin(x / 9 + c) * numpy.cos(y / 7) + numpy.random.default_rng(seed).normal(0, 4, y.shape)
    if channels % 2 == 0:
        picture[..., -1] = 255 * ((x[..., -1] // 5 + y[..., -1] // 5) % 2)
    picture = picture if bits == 8 else picture * 257
    return picture.clip(0, 2**bits - 1).astype(numpy.uint8 if bits == 8 else numpy.uint16)


def write_png(path, picture, **options):
    height, width, channels = picture.shape
    bits = 8 * picture.itemsize
    writer = png.Writer(width, height, greyscale=channels < 3, alpha=channels % 2 == 0, bitdepth=bits, **options)
    with open(path, "wb") as file:
        writer.write(file, picture.reshape(height, -1).tolist())


def read_png(path):
    width, height, rows, information = png.Reader(str(path)).read()
    return numpy.array([list(row) for row in rows]).reshape(height, width, information["planes"])


def write_tiff(path, picture, **options):
    channels = picture.shape[2]
    colours = {"photometric": "rgb" if channels > 2 else "minisblack", "planarconfig": "contig"}
    extra = {"extrasamples": ["unassalpha"]} if channels % 2 == 0 else {}
    tifffile.imwrite(path, picture if channels > 1 else picture[..., 0], **{**colours, **extra, **options})


KINDS = [(channels, bits) for channels in (1, 2, 3, 4) for bits in (8, 16)]


@pytest.mark.parametrize("channels,bits", KINDS)
@pytest.mark.parametrize("height,width", [(1, 1), (13, 37)])
def test_every_kind_of_sample_goes_through_both_lossless_formats(channels, bits, height, width):
    picture = samples(height, width, channels, bits)
    write_png("in.png", picture, interlace=True)
    succeeds("in.png", "out.tif", *SAME)
    succeeds("out.tif", "out.png", *SAME)
    assert (read_png("out.png") == picture).all()
    assert (tifffile.imread("out.tif").reshape(picture.shape) == picture).all()


@pytest.mark.parametrize("options", [
    {"tile": (16, 16)}, {"rowsperstrip": 5}, {"planarconfig": "separate"}, {"byteorder": ">"}, {"bigtiff": True},
    {"compression": "deflate", "predictor": True}, {"tile": (16, 32), "planarconfig": "separate"}], ids=str)
def test_every_layout_of_tiff_is_read(options):
    picture = samples(45, 53, 3, 16)
    separate = options.get("planarconfig") == "separate"
    tifffile.imwrite("in.tif", numpy.moveaxis(picture, 2, 0) if separate else picture, photometric="rgb", **options)
    succeeds("in.tif", "out.png", *SAME)
    assert (read_png("out.png") == picture).all()


def test_palettes_low_depths_and_inverted_gray_are_expanded():
    pixels = numpy.arange(12).reshape(3, 4) % 4
    colours = numpy.array([(255, 0, 0), (0, 255, 0), (0, 0, 255), (9, 99, 199)])
    with open("palette.png", "wb") as file:
        png.Writer(4, 3, palette=[tuple(int(v) for v in c) for c in colours], bitdepth=2).write(file, pixels.tolist())
    with open("gray.png", "wb") as file:
        png.Writer(4, 3, greyscale=True, bitdepth=2).write(file, pixels.tolist())
    tifffile.imwrite("white.tif", (255 - 85 * pixels).astype(numpy.uint8), photometric="miniswhite")
    for name, expected in (("palette.png", colours[pixels]), ("gray.png", 85 * pixels[..., None]), ("white.tif", 85 * pixels[..., None])):
        succeeds(name, "out.png", *SAME)
        assert (read_png("out.png") == expected).all(), name


def test_jpeg_is_read_and_written():
    picture = samples(40, 50, 3, 8)
    Image.fromarray(picture).save("in.jpg", quality=98, subsampling=0)
    decoded = numpy.array(Image.open("in.jpg")).astype(int)
    succeeds("in.jpg", "out.png", *SAME)
    assert abs(read_png("out.png") - decoded).max() <= 1  # decoders may round the last bit differently
    succeeds("in.jpg", "out.jpeg", *SAME)
    assert abs(numpy.array(Image.open("out.jpeg")) - decoded).mean() < 4


def test_what_a_file_says_beside_its_samples_is_carried_over():
    profile, texts = bytes(range(200)) * 3, PngImagePlugin.PngInfo()
    texts.add_text("Title", "Hall")
    texts.add_itxt("Place", "Zürich")
    exif = Image.Exif()
    exif[0x010E] = "a hall"
    gray = Image.fromarray(samples(20, 20, 1, 8)[..., 0])
    # A profile that is none is dropped by libpng: take one that is real.
    from PIL import ImageCms
    profile = ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()
    colour = Image.fromarray(samples(20, 20, 3, 8))
    colour.save("in.png", icc_profile=profile, dpi=(300, 200), pnginfo=texts, exif=exif)
    colour.save("in.jpg", icc_profile=profile, dpi=(300, 200), comment="remark", exif=exif)
    colour.save("in.tif", icc_profile=profile, dpi=(300, 200), description="a hall")
    for source in ("in.png", "in.jpg", "in.tif"):
        for target in ("out.png", "out.jpg", "out.tif"):
            succeeds(source, target)
            result = Image.open(target)
            assert "icc_profile" in result.info, (source, target)
            assert result.info["icc_profile"] == profile, (source, target)
            assert [round(float(value)) for value in result.info["dpi"]] == [300, 200], (source, target)
    succeeds("in.png", "out.png")
    assert Image.open("out.png").text == {"Title": "Hall", "Place": "Zürich"}
    succeeds("in.jpg", "out.png")
    assert Image.open("out.png").getexif()[0x010E] == "a hall"
    write_png("gamma.png", numpy.array(gray)[..., None], gamma=0.45455)
    succeeds("gamma.png", "out.png")
    assert png.Reader("out.png").read()[3]["gamma"] == pytest.approx(0.45455)


def test_alpha_stays_and_colours_are_cleaned():
    picture = samples(64, 64, 4, 16)
    write_png("in.png", picture)
    succeeds("in.png", "out.png")
    cleaned = read_png("out.png")
    assert (cleaned[..., 3] == picture[..., 3]).all()
    assert numpy.std(numpy.diff(cleaned[..., :3], 2, axis=1)) < 0.5 * numpy.std(numpy.diff(picture[..., :3].astype(int), 2, axis=1))


GAINS = {("bivariate", "hard"): 7.4, ("given", "hard"): 3.9, ("given", "soft"): 3.2, ("universal", "hard"): 3.9,
         ("universal", "soft"): 2.4, ("level-dependent", "hard"): 1.1, ("level-dependent", "soft"): 4.1,
         ("band-variance", "hard"): 1.8, ("band-variance", "soft"): 4.9, ("band-signal", "hard"): 2.6,
         ("band-signal", "soft"): 4.7, ("band-signal-masked", "hard"): 2.7, ("band-signal-masked", "soft"): 4.4}


@pytest.mark.parametrize("method,thresholding", GAINS)
def test_rules_bring_what_they_are_known_to_bring(method, thresholding):
    """Half a decibel below what each rule brings in one pass, bivariate in nine."""
    rule = ("--method", method) + (("--shifts", "8") if method == "bivariate" else ("--shifts", "0", "--depth", "4", "--thresholding", thresholding))
    report = json.loads(succeeds(DATA / "ascent.png", "out.png", "--side-by-side", "three.png", "--noise", 20, "--json", *rule))
    assert report["psnr"]["cleaned"] - report["psnr"]["noisy"] > GAINS[method, thresholding]
    assert Image.open("three.png").size == (3 * 512 + 16, 512)


def test_opponent_colours_clean_better_and_threads_change_nothing():
    results = {}
    for colour in ("opponent", "channels"):
        report = succeeds(DATA / "raccoon.png", f"{colour}.png", "--noise", 20, "--shifts", 2, "--json", "--color", colour)
        results[colour] = json.loads(report)
    assert results["opponent"]["psnr"]["cleaned"] > results["channels"]["psnr"]["cleaned"] + 0.7
    assert results["opponent"]["noise"] == pytest.approx([20, 20, 20], rel=0.25)
    succeeds(DATA / "raccoon.png", "jobs.png", "--noise", 20, "--shifts", 2, "--jobs", 3)
    assert pathlib.Path("jobs.png").read_bytes() == pathlib.Path("opponent.png").read_bytes()


def test_noise_known_or_not_found():
    write_png("in.png", samples(64, 64, 3, 8))
    known = [json.loads(succeeds("in.png", "out.png", "--json", "--sigma", sigma))["noise"] for sigma in ("4", "4,4,4", "0,0,6")]
    assert known[0] == pytest.approx([4, 4, 4]) and known[1] == pytest.approx(known[0])
    assert known[2] == pytest.approx([6 / 3**0.5, 6 / 2**0.5, 6 / 6**0.5])
    refuses("one number for each channel", "in.png", "out2.png", "--sigma", "4,4")
    # Half of the noise is lost to clipping: what is left unclipped still tells it.
    noisy = numpy.random.default_rng(3).normal(30, 20, (256, 256, 1))
    noisy[:, :128] -= 60
    write_png("clipped.png", noisy.round().clip(0, 255).astype(numpy.uint8))
    report = json.loads(succeeds("clipped.png", "out.png", "--json"))
    assert report["noise"][0] == pytest.approx(20, rel=0.15)
    write_png("black_and_white.png", (255 * (noisy > 0)).astype(numpy.uint8))
    result = run("black_and_white.png", "out.png")
    assert result.returncode == 0 and "no noise was found" in result.stderr


def test_seeds_shifts_and_version():
    outputs = [succeeds(DATA / "ascent.png", "out.png", "--noise", 20, "--seed", seed, "--shifts", "00").split("PSNR")[1].split("\n")[0] for seed in (7, 7, 8)]
    assert outputs[0] == outputs[1] != outputs[2]
    assert json.loads(succeeds(DATA / "ascent.png", "out.png", "--shifts", "016", "--json"))["shifts"] == 16
    assert succeeds("--version").startswith("denoise_image 0.")
    assert "--sigma" in succeeds("--help")


# Bad files

def chunk(kind, content):
    return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))


def png_of(width, height):
    header = struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(b"\0\0")) + chunk(b"IEND", b"")


def bad_files():
    whole = (DATA / "ascent.png").read_bytes()
    files = {"text.png": b"not a picture\n", "empty.png": b"", "zero.png": png_of(0, 5), "huge.png": png_of(60000, 60000),
             "crc.png": whole[:50000] + bytes([whole[50000] ^ 1]) + whole[50001:]}
    files |= {f"cut{length}.png": whole[:length] for length in (8, 30, 60, 60000, len(whole) - 12)}
    for name, save in (("jpeg", {"format": "JPEG"}), ("tiff", {"format": "TIFF", "compression": "tiff_lzw"})):
        buffer = io.BytesIO()
        Image.open(DATA / "raccoon.png").save(buffer, **save)
        files |= {f"cut{length}.{name}": buffer.getvalue()[:length] for length in (100, 5000, len(buffer.getvalue()) * 2 // 3)}
    buffer = io.BytesIO()
    Image.new("CMYK", (9, 9)).save(buffer, "JPEG")
    files["cmyk.jpeg"] = buffer.getvalue()
    buffer = io.BytesIO()
    tifffile.imwrite(buffer, numpy.zeros((9, 9), numpy.float32))
    files["float.tiff"] = buffer.getvalue()
    return files


BAD_FILES = bad_files()


@pytest.mark.parametrize("name", BAD_FILES)
def test_bad_files_are_refused(name):
    pathlib.Path(name).write_bytes(BAD_FILES[name])
    refuses(name, name, "out.png")


def test_bad_places_are_refused():
    write_png("in.png", samples(9, 9, 4, 16))
    write_png("rgb.png", samples(9, 9, 3, 8))
    os.mkdir("folder.png")
    os.symlink("in.png", "link.png")
    os.symlink("/dev/null", "null.png")
    os.link("in.png", "hard.png")
    for words, *arguments in (
            ("No such file", "missing.png", "out.png"), ("holds no picture", "folder.png", "{}.png"), ("is a folder", "in.png", "folder.png"),
            ("folder does not exist", "in.png", "missing/out.png"), ("not a plain file", "in.png", "null.png"),
            ("ending", "in.png", "out.gif"), ("transparency", "in.png", "out.jpg"), ("is an input too", "in.png", "./in.png"),
            ("is an input too", "in.png", "link.png"), ("is an input too", "in.png", "hard.png"),
            ("is an input too", "rgb.png", "out.png", "--side-by-side", "./rgb.png"),
            ("two results", "rgb.png", "out.png", "--side-by-side", "folder.png/../out.png"),
            ("folder does not exist", "rgb.png", "out.png", "--side-by-side", "missing/out.png"),
            ("pattern", "in.png", "rgb.png", "out.png"), ("two results", "in.png", "rgb.png", "in.png", "new{}.png")):
        refuses(words, *arguments)


def test_a_folder_without_permission_is_found_before_the_work():
    picture, target = pathlib.Path("in.png"), pathlib.Path("closed")
    write_png(picture, samples(2000, 2000, 1, 8))
    target.mkdir(mode=0o555)
    as_other = {"user": 65534} if os.geteuid() == 0 else {}
    for folder in [pathlib.Path.cwd(), *pathlib.Path.cwd().parents][:4]:
        if os.geteuid() == 0 and folder.owner() == "root" and folder != pathlib.Path("/tmp"):
            folder.chmod(0o755)
    start = time.monotonic()
    refuses("ermission denied", picture, target / "out.png", "--shifts", "1000", **as_other)
    assert time.monotonic() - start < 10


@pytest.mark.parametrize("option", [
    "--depth 0", "--depth 9", "--depth two", "--shifts -1", "--shifts 1.5", "--noise nan", "--noise -5", "--sigma nan", "--wavelet 5_5",
    "--method none", "--method universal --thresholding firm", "--thresholding soft", "--seed -1", "--seed 18446744073709551616",
    "--method given --threshold inf", "--method universal --threshold 5", "--method universal --ratio 0.5", "--jobs 0",
    "--method band-signal --threshold-factor 2", "--method given --threshold 5 --threshold-factor 2", "--color gray", "--surprise"])
def test_bad_options_are_refused(option):
    write_png("in.png", samples(9, 9, 1, 8))
    refuses("--", "in.png", "out.png", *option.split())


# Nothing is lost

def test_one_bad_picture_does_not_stop_the_others():
    os.mkdir("album")
    os.mkdir("clean")
    for name in ("a", "c"):
        write_png(f"album/{name}.png", samples(30, 40, 3, 8))
    pathlib.Path("album/b.png").write_bytes(BAD_FILES["crc.png"])
    result = run("album", "clean/{}.tif")
    assert result.returncode == 1
    assert [line.split(" ->")[0] for line in result.stdout.splitlines()] == ["album/a.png", "album/c.png"]
    assert len(result.stderr.splitlines()) == 1 and "album/b.png" in result.stderr
    assert sorted(os.listdir("clean")) == ["a.tif", "c.tif"]


def test_modes_and_links_are_kept():
    write_png("in.png", samples(9, 9, 1, 8))
    pathlib.Path("target.png").write_text("old")
    os.chmod("target.png", 0o640)
    os.symlink("target.png", "link.png")
    succeeds("in.png", "link.png")
    assert os.path.islink("link.png") and Image.open("target.png").size == (9, 9)
    assert os.stat("target.png").st_mode & 0o777 == 0o640


def test_a_full_disk_leaves_the_old_files():
    write_png("in.png", samples(200, 200, 3, 8))
    for name in ("out.png", "both.tif"):
        pathlib.Path(name).write_text("old")
    refuses("out.png", "in.png", "out.png", preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000)))
    limit = os.stat("in.png").st_size + 20000  # enough for the first output, not for both side by side
    refuses("both.tif", "in.png", "out.png", "--side-by-side", "both.tif",
            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
    assert pathlib.Path("out.png").read_text() == pathlib.Path("both.tif").read_text() == "old"


@pytest.mark.parametrize("kind", [signal.SIGTERM, signal.SIGINT])
def test_a_program_that_is_ended_leaves_the_old_file(kind):
    write_png("in.png", samples(400, 400, 1, 8))
    pathlib.Path("out.png").write_text("old")
    process = subprocess.Popen([PROGRAM, "in.png", "out.png", "--shifts", "1000"])
    while not any(name.endswith(".part") for name in os.listdir()):
        time.sleep(0.01)
        assert process.poll() is None
    process.send_signal(kind)
    assert process.wait(20) == -kind
    assert sorted(os.listdir()) == ["in.png", "out.png"] and pathlib.Path("out.png").read_text() == "old"
