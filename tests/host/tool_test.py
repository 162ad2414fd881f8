"""Runs the command as a person would. Usage: tool_test.py KREILUGE DOCUMENT [unittest arguments]"""

import fcntl
import json
import os
import pathlib
import pty
import re
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import termios
import time
import unittest

KREILUGE = os.path.abspath(sys.argv.pop(1))
DOCUMENT = pathlib.Path(sys.argv.pop(1)).resolve()
EXAMPLE = DOCUMENT.with_name("astronaut.json")


class ToolTest(unittest.TestCase):
    def setUp(self):
        self.directory = tempfile.TemporaryDirectory()
        self.addCleanup(self.directory.cleanup)
        self.path = pathlib.Path(self.directory.name)

    def run_tool(self, *arguments, code=0):
        result = subprocess.run([KREILUGE, *arguments], cwd=self.path, capture_output=True, text=True, timeout=120)
        if code is not None:
            self.assertEqual(result.returncode, code, f"{arguments}: {result.stdout}{result.stderr}")
        return result

    def plate(self, name, *arguments):
        self.run_tool("plate", "-o", name, "--size", "320x180", *arguments)

    def names(self):
        return sorted(path.name for path in self.path.iterdir())

    def test_help_tells_of_every_command(self):
        overview = self.run_tool("--help").stdout
        for command in ["grade", "edge", "comp", "blend", "chroma", "functions", "info", "diff", "curve", "plate"]:
            self.assertIn(command, overview)
            self.assertIn("--help", self.run_tool(command, "--help").stdout)
        self.assertRegex(self.run_tool("--version").stdout, r"^kreiluge \d+\.\d+\.\d+\n$")
        self.run_tool(code=2)

    def test_only_files_need_the_module_that_knows_them(self):
        loaded = subprocess.run(["ldd", KREILUGE], capture_output=True, text=True, check=True).stdout
        for library in re.findall(r"=> (\S+libkreiluge\S+)", loaded):
            shutil.copy(library, self.path)
        environment = {**os.environ, "LD_LIBRARY_PATH": str(self.path)}
        for command, code, text in [
            (["functions"], 0, ""),
            (["info", "in.exr"], 3, f"cannot load '{self.path.resolve()}/kreiluge/files.so', which"),
        ]:
            result = subprocess.run([KREILUGE, *command], env=environment, capture_output=True, text=True)
            self.assertEqual(result.returncode, code, result.stderr)
            self.assertIn(text, result.stderr)

    def test_bad_usage(self):
        self.plate("in.exr")
        grade = ["grade", "in.exr", "-o", "out.exr"]
        images = ["in.exr", "in.exr", "-o", "#.exr"]
        for arguments, expected in [
            (["grad"], "did you mean 'grade'?"),
            (grade, "no chain"),
            ([*grade, "abs", "--thread", "2"], "did you mean '--threads'?"),
            ([*grade, "abs", "--threads=65"], "1 to 64"),
            ([*grade, "abs", "--tile=0"], "1 to 4096"),
            ([*grade, "abs", "--depth", "unit8"], "did you mean 'uint8'?"),
            ([*grade, "abs", "--progress", "jsn"], "did you mean 'json'?"),
            ([*grade, "abs", "--white", "-3"], "--white"),
            ([*grade, "abs", "--frames", "1-3"], "no place for the frame number"),
            ([*grade, "abs", "--chain", "look.json"], "a chain in the arguments already"),
            ([*grade, "--chain", "."], "cannot read the chain file '.'"),
            ([*grade, "abs", "more"], "one argument too many"),
            (["edge", "in.exr", "-o", "out.exr", "--scope", "rx"], "unknown component 'x'"),
            (["plate", "-o", "out.exr", "--size", "20"], "1920x1080"),
            (["info", "none.exr"], "no such file"),
            (["comp", "ovr", *images], "did you mean 'over'?"),
            (["comp", "over", *images, "--frames", "1-2"], "frame number in 'in.exr'; "),
            (["comp", "over", "in.#.exr", "in.exr", "-o", "out.exr", "--frames", "1-2"], "frame number in 'out.exr';"),
            (["comp", "over", *images, "--white", "9"], "unknown option '--white'"),
            (["blend", *images], "nothing to mix by"),
            (["blend", *images, "--mix", "1", "--swap"], "--swap requires --mask"),
            (["blend", *images, "--mix", "1", "--weights", "1", "1"], "--mix excludes --weights"),
            (["blend", "in.exr", "-o", "out.exr", "--weights", "1", "1"], "--weights requires B"),
            (["blend", *images, "--mask", "in.exr", "--mask-channel", "x"], "--mask-channel: unknown component 'x'"),
            (["chroma", "in.exr", "-o", "out.exr", "--matte", "in.exr", "--backing", "0", "1"], "--backing: At least 3 required"),
            (["chroma", "in.exr", "-o", "out.exr", "--backing", "0", "1", "0"], "--matte is required"),
            (["curve", "0 0, 1 1", "-o", "out.png", "--size", "9"], "64 to 4096"),
        ]:
            error = self.run_tool(*arguments, code=2).stderr
            self.assertTrue(error.startswith("kreiluge: "), error)
            self.assertIn(expected, error)
        self.assertEqual(self.names(), ["in.exr"])

    def test_files_that_cannot_be_read_or_written(self):
        self.plate("in.exr")
        self.assertIn("'.'", self.run_tool("grade", ".", "-o", "out.exr", "abs", code=3).stderr)
        self.assertIn("'no/out.exr'", self.run_tool("grade", "in.exr", "-o", "no/out.exr", "abs", code=4).stderr)
        self.run_tool("plate", "-o", "no/out.exr", code=4)
        self.assertEqual(self.names(), ["in.exr"])

    def test_a_full_disk_is_an_error(self):
        names = ["out.bmp", "out.dpx", "out.exr", "out.fits", "out.jp2", "out.jpg", "out.png", "out.sgi", "out.tga", "out.tif"]
        if "KREILUGE_SANITIZED" not in os.environ:  # the coder of HEIF leaks
            names.append("out.heic")
        for name in names:
            (self.path / name).write_text("old")
            limited = f"ulimit -f 16; exec '{KREILUGE}' plate -o {name} --depth {'half' if name == 'out.exr' else 'uint8'}"
            result = subprocess.run(["bash", "-c", limited], cwd=self.path, capture_output=True, text=True)
            self.assertEqual(result.returncode, 4, result.stderr)
            self.assertTrue(result.stderr.splitlines()[-1].startswith(f"kreiluge: cannot write '{name}': "), result.stderr)
            self.assertEqual((self.path / name).read_text(), "old")
        with open("/dev/full", "w") as full:
            self.assertEqual(subprocess.run([KREILUGE, "functions"], stdout=full, stderr=full).returncode, 4)
        self.assertEqual(self.names(), sorted(names))

    def test_depths_and_differences(self):
        for name, depth in [("a.png", "uint8"), ("a.tif", "uint16"), ("b.tif", "uint32"), ("a.exr", "half"), ("b.exr", "float")]:
            self.plate(name, "--depth", depth, "--alpha")
            info = json.loads(self.run_tool("info", name, "--json").stdout)
            self.assertEqual(info["planes"], [{"name": "color", "format": depth, "channels": ["R", "G", "B", "A"]}])
        self.assertIn("the same", self.run_tool("diff", "a.exr", "a.exr").stdout)
        self.run_tool("diff", "a.exr", "b.exr", code=1)

    def test_what_needs_a_gpu_says_so(self):
        self.plate("in.png")
        environment = {**os.environ, "KREILUGE_GPU": "off"}

        def without(*arguments):
            return subprocess.run([KREILUGE, *arguments], cwd=self.path, env=environment, capture_output=True, text=True)

        grade = ["grade", "in.png", "add 0.1", "-o", "out.png", "--device"]
        result = without(*grade, "gpu")
        self.assertEqual((result.returncode, result.stderr), (6, "kreiluge: --device gpu: there is none: KREILUGE_GPU: off\n"))
        self.assertEqual(self.names(), ["in.png"])
        script = without("run", "-e", "grade in.png 'add 0.1' --device gpu | write out.png")
        self.assertEqual(script.returncode, 6, script.stderr)
        result = without(*grade, "auto")
        self.assertEqual(result.returncode, 0)
        self.assertIn("note: grade: computed on the CPU, as there is no GPU: KREILUGE_GPU: off", result.stderr)
        self.run_tool("grade", "in.png", "add 0.1", "-o", "cpu.png")
        self.run_tool("diff", "out.png", "cpu.png")
        self.assertEqual(without("gpu").returncode, 6)
        self.assertEqual(json.loads(without("gpu", "--json").stdout)["refused"], ["KREILUGE_GPU: off"])
        found = json.loads(self.run_tool("gpu", "--json", code=None).stdout)
        if found["found"]:
            stats = self.run_tool(*grade, "gpu", "--progress", "json", "--stats").stdout
            self.assertGreater(json.loads(stats.splitlines()[-2])["stats"]["gpu"]["run"], 0)

    def test_printed_shaders_compile(self):
        compiler = shutil.which("glslangValidator")
        if compiler is None:
            self.skipTest("glslangValidator is not installed")
        main = "out vec4 o;\nvoid main() { o = look(vec4(0.5)); }\n"
        for chain in ["", "log 1, gamma 0, gamma 2.2 @rg, saturation, average", "curve 0 0, 0.5 0.6, 1 1, huecurve hue=0:0.5;1:0.5"]:
            for channels in "134":
                printed = self.run_tool("shader", "mult 0.5 @r, hsv 20", "--name", "other").stdout
                printed += self.run_tool("shader", chain, "--name", "look", "--channels", channels).stdout
                (self.path / "a.frag").write_text("#version 400\n#extension GL_ARB_shader_bit_encoding : enable\n" + printed + main)
                (self.path / "a.comp").write_text(self.run_tool("shader", chain, "--compute", "half").stdout)
                for file in ["a.frag", "a.comp"]:
                    result = subprocess.run([compiler, file], cwd=self.path, capture_output=True, text=True)
                    self.assertEqual(result.returncode, 0, result.stdout)
        exact = []  # what may not be contracted, without a function and with a sum of products
        for chain in ["", "madd 0.7:0.6:0.5 0.1"]:
            (self.path / "b.comp").write_text(self.run_tool("shader", chain, "--compute", "float").stdout)
            binary = subprocess.run([compiler, "-G", "--amb", "--aml", "-H", "b.comp"], cwd=self.path, capture_output=True, text=True)
            exact.append(binary.stdout.count("NoContraction"))
        self.assertGreaterEqual(exact[1], exact[0] + 2)
        self.assertIn("uniform float grade_add1 = 0.5; // of grade_function1\n", self.run_tool("shader", "add 0.5").stdout)
        for name in ["3x", "main", "vec4", "gl_x"]:
            self.run_tool("shader", "add 0.5", "--name", name, code=2)

    def test_sequences(self):
        for frame in [1, 2, 4]:
            self.plate(f"in.{frame:04d}.exr")
        result = self.run_tool("grade", "in.####.exr", "-o", "out.%03d.exr", "add 0.1", "--frames", "1-4", code=1)
        self.assertIn("in.0003.exr", result.stderr)
        self.assertIn("1 of 4 frames failed", result.stderr)
        self.assertEqual([name for name in self.names() if name.startswith("out")], ["out.001.exr", "out.002.exr", "out.004.exr"])
        for source, output, white, code, lines in [("in.####.exr", "in.####.exr", [], 2, 1), ("none.#.exr", "out.#.exr", [], 2, 3), ("in.####.exr", "no/#.exr", [], 4, 1), ("in.####.exr", "out.#.exr", ["--white", "9"], 2, 1)]:
            result = self.run_tool("grade", source, "-o", output, "--frames", "1,2", "abs", *white, code=code)
            self.assertEqual(len(result.stderr.splitlines()), lines, result.stderr)
        (self.path / "look.json").write_text('[{"function": "add", "add": 0.1}]')
        self.run_tool("grade", "in.####.exr", "-o", "json.##.exr", "--chain", "look.json", "--frames", "1-4x3")
        self.run_tool("diff", "out.004.exr", "json.04.exr")

    def flat(self, name, values):
        self.run_tool("grade", "plate.exr", "-o", name, f"mult 0, add {values}")

    def test_combining(self):
        self.plate("plate.exr", "--alpha")
        for name, values in [("s.exr", "0.25:0.5:0.125:0.5"), ("d.exr", "0.5:0.25:1:0.5"), ("m.exr", "1:0.25:0.5:0.75")]:
            self.flat(name, values)
        for arguments, values in [
            ("comp over s.exr d.exr", "0.5:0.625:0.625:0.75"),
            ("comp 3 s.exr d.exr --unpremult", "0.5:1:0.25:0.25"),
            ("blend d.exr s.exr --mix 0.25", "0.4375:0.3125:0.78125:0.5"),
            ("blend d.exr --mask m.exr --mask-channel a --swap", "0.375:0.1875:0.75:0.375"),
            ("blend d.exr s.exr --weights -1 0.5", "-0.375:0:-0.9375:-0.25"),
            ("chroma d.exr --matte m.exr --matte-channel b --backing 0.5 0 2", "0.25:0.25:0:0.5"),
        ]:
            self.flat("expected.exr", values)
            self.run_tool(*arguments.split(), "-o", "out.exr")
            difference = self.run_tool("diff", "out.exr", "expected.exr", code=None)
            self.assertEqual(difference.returncode, 0, f"{arguments}: {difference.stdout}")
        for name in ["in.1.exr", "in.2.exr"]:
            self.flat(name, "0.25:0.5:0.125:0.5")
        self.run_tool("comp", "over", "in.#.exr", "d.exr", "-o", "out.#.exr", "--frames", "1,2")
        self.run_tool("comp", "over", "s.exr", "d.exr", "-o", "out.exr")
        self.run_tool("diff", "out.exr", "out.2.exr")

    def test_filters_and_resampling(self):
        self.plate("a.exr", "--depth", "float")
        self.plate("b.png", "--depth", "uint8")
        for one, other in [
            ("degrain b.png --size 3", "degrain b.png --size 3 | degrain --size 1"),
            ("dilate a.exr --size 5x3", "grade a.exr negate | erode --size 5x3 | grade negate"),
            ("erode a.exr --size 4", "erode a.exr --size 5x1 | erode --size 1x5"),
            ("open a.exr --size 3", "grade a.exr negate | close | grade negate"),
            ("close a.exr --size 5", "close a.exr --size 5 | close --size 5"),
            ("feather a.exr --radius 1", 'grade a.exr ""'),
            ("shift a.exr 12 -3.5", "shift a.exr 20 -4 | shift -8 0.5"),
            ("resize a.exr 200% --filter nearest", "resize a.exr 640x90 --filter nearest --fit width"),
            ("transform a.exr --rotate 90 --scale 0.5", "transform a.exr --rotate -270 --scale 0.5"),
            ("corners b.png 0,0 320,0 320,180 0,180", 'grade b.png ""'),
            ("warp a.exr --map a.exr --filter nearest", "warp a.exr --map a.exr --filter nearest --wrap clamp"),
            ("noise --size 64x64", "noise --size 64x64 --type perlin --period 32,32"),
            (f"roto {EXAMPLE} --like a.exr", f"roto {EXAMPLE} --size 320x180 --depth float --motion 9 --shutter 0"),
        ]:
            for name, script in [("one", one), ("other", other)]:
                self.run_tool("run", "-e", script, "-o", name + (".png" if "b.png" in one else ".exr"))
            difference = self.run_tool("diff", *(["one.png", "other.png"] if "b.png" in one else ["one.exr", "other.exr"]), code=None)
            self.assertEqual(difference.returncode, 0, f"{one}: {difference.stdout}")

    def test_the_schema_has_the_members_of_shapes(self):
        schema = json.loads(DOCUMENT.with_name("shapes.schema.json").read_text())
        shape = schema["$defs"]["shape"]
        for level, text in [
            (schema, '{"?": 0}'),
            (shape, '{"shapes": [{"?": 0}]}'),
            (shape["properties"]["keys"]["items"], '{"shapes": [{"keys": [{"?": 0}]}]}'),
            (schema["$defs"]["points"]["items"], '{"shapes": [{"points": [{"?": 0}]}]}'),
        ]:
            (self.path / "a.json").write_text(text)
            error = self.run_tool("roto", "a.json", "-o", "a.exr", code=2).stderr
            self.assertEqual(error.split("known: ")[-1].strip(), ", ".join(level["properties"]))
        for name in ["kind", "fill", "drop-off"]:
            (self.path / "a.json").write_text('{"shapes": [{"points": [], "%s": 0}]}' % name)
            error = self.run_tool("roto", "a.json", "-o", "a.exr", code=2).stderr
            self.assertEqual(error.split("expected ")[-1].strip(), ", ".join(shape["properties"][name]["enum"]))

    def test_a_long_script_needs_no_deep_stack(self):
        self.plate("in.png")
        lines = 5000 * ['p = grade p "add 0.00001"\n']
        (self.path / "long.kr").write_text("".join(['p = grade in.png "add 0"\n', *lines, "write p out.png\n"]))
        command = ["sh", "-c", 'ulimit -s 256 && exec "$0" run long.kr', KREILUGE]
        self.assertEqual(subprocess.run(command, cwd=self.path).returncode, 0)

    def test_progress_and_stats(self):
        self.plate("in.exr")
        grade = ["grade", "in.exr", "-o", "out.exr", "abs"]
        quiet = self.run_tool(*grade)
        self.assertEqual(quiet.stdout + quiet.stderr, "")
        self.assertIn("megapixels a second", self.run_tool(*grade, "--stats").stdout)
        (self.path / "in.1.exr").symlink_to("in.exr")
        (self.path / "in.3.exr").symlink_to("in.exr")
        frames = [KREILUGE, "grade", "in.#.exr", "-o", b"\xff.#.exr", "abs", "--frames", "1-3", "--stats", "--progress", "json"]
        result = subprocess.run(frames, cwd=self.path, capture_output=True, text=True)
        self.assertEqual(result.returncode, 1)
        events = [json.loads(line) for line in result.stdout.splitlines()]
        self.assertEqual(events[0], {"event": "start", "frames": 3})
        self.assertEqual(events[-1], {"event": "end", "done": 2, "failed": 1})
        self.assertEqual([(e["event"], e["frame"]) for e in events[1:-1] if e["event"] != "progress"], [("done", 1), ("failed", 2), ("done", 3)])
        self.assertEqual([e["rows"] for e in events if e["event"] == "progress"][-1], 180)
        self.assertEqual(events[-2]["stats"]["pixels"], 320 * 180)
        self.assertIn("no such file: 'in.2.exr'", [e for e in events if e["event"] == "failed"][0]["error"])

    def test_the_bar_fits_the_terminal(self):
        self.plate("in.exr")
        bar = "#" * 30
        for columns, last in [(90, f"a-rather-long-name-é.exr [{bar}] 100%"), (30, "...ng-name-é.exr [#####] 100%"), (15, "[######] 100%"), (8, "100%"), (4, "100")]:
            master, terminal = pty.openpty()
            fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
            subprocess.run([KREILUGE, "grade", "in.exr", "-o", "a-rather-long-name-é.exr", "abs"], cwd=self.path, stderr=terminal, check=True)
            os.close(terminal)
            lines = os.read(master, 65536).decode().split("\r\033[K")
            os.close(master)
            self.assertLess(max(len(line) for line in lines), columns)
            self.assertEqual(lines[-2:], [last, ""])

    def interrupted(self, command, number):
        process = subprocess.Popen(command, cwd=self.path, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        while len(self.names()) == 1 and process.poll() is None:
            time.sleep(0.005)
        process.send_signal(number)
        return process.wait(timeout=60)

    def test_a_signal_stops_a_job_and_leaves_nothing(self):
        self.run_tool("plate", "-o", "in.exr", "--size", "3000x3000")
        edge = [KREILUGE, "edge", "in.exr", "-o", "out.exr"]
        for number, code in [(signal.SIGINT, 130), (signal.SIGTERM, 143), (signal.SIGQUIT, 131)]:
            self.assertEqual(self.interrupted(edge, number), code)
            self.assertEqual(self.names(), ["in.exr"])
        reader_gone = subprocess.Popen([*edge, "--progress", "json"], cwd=self.path, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        reader_gone.stdout.close()
        self.assertEqual(reader_gone.wait(timeout=60), 141)
        self.assertEqual(self.names(), ["in.exr"])
        self.assertEqual(self.interrupted(["nohup", *edge], signal.SIGHUP), 0)

    @unittest.skipIf("KREILUGE_SANITIZED" in os.environ, "the sanitizer keeps freed memory")
    def test_memory_does_not_grow_with_the_height(self):
        used = []
        for height in [800, 12800]:
            self.run_tool("plate", "-o", "in.exr", "--size", f"512x{height}", "--threads", "2")
            process = subprocess.Popen([KREILUGE, "grade", "in.exr", "-o", "out.exr", "gamma 2", "--threads", "2"], cwd=self.path)
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
            self.assertEqual(process.returncode, 0)
            used.append(usage.ru_maxrss)
        self.assertLess(used[1] - used[0], 20000, "KiB more for sixteen times the height")

    def test_what_is_told_to_programs_and_terminals(self):
        self.plate("a,\x1b[31m.exr")
        self.plate("b.exr", "--depth", "float")
        self.assertIn("\na,\\x1b[31m.exr: openexr", "\n" + self.run_tool("info", "a,\x1b[31m.exr", "b.exr").stdout)
        images = json.loads(self.run_tool("info", "a,\x1b[31m.exr", "b.exr", "--json").stdout)
        self.assertEqual([image["metadata"]["ImageDescription"] for image in images], ["kreiluge test plate"] * 2)
        self.assertIn("ImageDescription: \"kreiluge test plate\"", self.run_tool("info", "b.exr").stdout)
        self.assertIn("\\x1b[2J", self.run_tool("info", "\x1b[2J", code=2).stderr)

        difference = json.loads(self.run_tool("diff", "a,\x1b[31m.exr", "b.exr", "--tolerance", "0.01", "--json", "-o", "d.png", code=1).stdout)
        self.assertEqual((difference["same"], difference["differing"], difference["tolerance"]), (False, 0, 0.01))
        self.assertGreater(difference["channels"][0]["largest"], 0)
        self.run_tool("diff", "d.png", "d.png")

        everything = json.loads(self.run_tool("functions", "--json").stdout)
        self.assertEqual(json.loads(self.run_tool("functions", "replace", "--json").stdout), next(f for f in everything if f["name"] == "replace"))
        self.assertEqual([f["colourSpace"] for f in everything if f["name"] in ["add", "log", "srgb"]], [None, "", "sRGB"])
        self.assertIn("a number of at least 0 (0.1)", self.run_tool("functions", "replace").stdout)
        unknown = subprocess.run([KREILUGE, "functions"], env={**os.environ, "KREILUGE_ISA": "sse"}, capture_output=True, text=True)
        self.assertIn("KREILUGE_ISA is 'sse', which is unknown and ignored; known: baseline", unknown.stderr)

    def test_curves_are_drawn(self):
        pictures = set()
        for name, arguments in [("a.png", ["0 0, .5 .8, 1 1"]), ("b.png", ["-1 0, 1 1 | 0 0, 1e9 1 | 0 0, 0 1"]), ("c.tif", ["0:0;0.5:0.8;1:1", "--extend"]), ("d.exr", ["0 0, .5 .8, 1 1"])]:
            self.run_tool("curve", *arguments, "-o", name, "--size", "100")
            info = json.loads(self.run_tool("info", name, "--json").stdout)
            self.assertEqual(info["planes"], [{"name": "color", "format": "half" if name == "d.exr" else "uint8", "channels": ["R", "G", "B"]}])
            pictures.add(self.run_tool("diff", "a.png", name, code=None).stdout)
        self.assertEqual(len(pictures), 4)

    def completed(self, *words):
        script = 'source <("$1" completion bash); shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _kreiluge; echo "${COMPREPLY[*]}"'
        return subprocess.run(["bash", "-uc", script, "bash", KREILUGE, "kreiluge", *words], capture_output=True, text=True, check=True).stdout.split()

    def test_completion(self):
        for words, expected in [
            (["comp", "ov"], ["over"]),
            (["comp", "over", ""], []),
            (["comp", "-o", "x.exr", "mul"], ["multiply"]),
            (["grade", "a", "--depth", "=", "u"], ["uint8", "uint16", "uint32"]),
            (["blend", "a", "--weights", "1", "--sw"], []),
            (["blend", "a", "--weights", "1", "2", "--sw"], ["--swap"]),
            (["blend", "a", "--mask-channel", "="], ["r", "g", "b", "a"]),
            (["functions", "hu"], ["hue", "huecurve"]),
            (["none", ""], []),
        ]:
            self.assertEqual(self.completed(*words), expected, words)
        if shutil.which("zsh"):
            script = self.run_tool("completion", "zsh").stdout
            subprocess.run(["zsh", "-f", "-n"], input=script, text=True, check=True)

    def test_every_way_reaches_the_same(self):
        manual = self.run_tool("man").stdout
        if shutil.which("groff"):
            formatted = subprocess.run(["groff", "-man", "-Tutf8", "-ww", "-z"], input=manual, capture_output=True, text=True)
            self.assertEqual(formatted.stderr, "")
        pages = dict(re.findall(r'^\.SS "kreiluge (\w+)"\n((?:(?!\.S).*\n)*)', manual, re.MULTILINE))
        commands = re.findall(r"^  (\w+) {3}", self.run_tool("--help").stdout.split("Subcommands:")[1], re.MULTILINE)
        self.assertEqual(commands, self.completed(""))
        self.assertEqual(commands, list(pages))
        operations = json.loads(self.run_tool("operations", "--json").stdout)
        self.assertEqual(commands[: len(operations)], [operation["name"] for operation in operations])
        self.assertEqual(self.completed("operations", ""), [operation["name"] for operation in operations])
        self.assertEqual((len(commands), len(operations)), (29, 19))
        count = 0
        for command in commands:
            helped = re.findall(r"^  (-[\w,-]+)", self.run_tool(command, "--help").stdout, re.MULTILINE)
            names = sorted(name for group in helped for name in group.split(","))
            self.assertEqual(names, sorted(self.completed(command, "-")))
            terms = re.findall(r"^\\fB(-.*?)(?: [A-Z].*)?\\fR$", pages[command].replace("\\-", "-"), re.MULTILINE)
            self.assertEqual(names, sorted(["-h", "--help", *(name for term in terms for name in term.split(", "))]))
            count += len(names)
        for operation in operations:
            options = {argument["option"] for argument in operation["inputs"] + operation["arguments"]} - {None}
            self.assertLessEqual(options, set(self.completed(operation["name"], "-")))
        self.assertEqual(count, 367)

    def test_the_documents_list_operations_and_functions(self):
        subprocess.run([sys.executable, DOCUMENT.with_name("tables.py"), "--check", KREILUGE], check=True)
        table = DOCUMENT.with_name("combine.md").read_text()
        operation = json.loads(self.run_tool("operations", "comp", "--json").stdout)["arguments"][0]
        for number, (name, formula) in enumerate(zip(operation["choices"], operation["meanings"], strict=True)):
            self.assertIn(f"| {number} | `{name}` | `{formula}` |", table)
        self.assertIn("gamma GAMMA", self.run_tool("functions").stdout)


if __name__ == "__main__":
    unittest.main()
