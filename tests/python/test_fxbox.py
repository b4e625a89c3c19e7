"""The Python package as its users have it."""
import doctest
import gc
import multiprocessing
import os
import pathlib
import signal
import tempfile
import threading
import time
import unittest

import fxbox
import numpy

INVERT = "ZNFilter.Invert.1(Inversity=100)"
# Takes seconds on a large picture.
SLOW = "ZNFilter.BlurGauss.1(Radius=45.0)" * 12


def picture(height=7, width=5, channels=3):
    values = numpy.arange(height * width * channels, dtype=numpy.uint32) * 37 % 251
    return values.astype(numpy.uint8).reshape(height, width, channels)


def inverted(array):
    result = 255 - array
    result[:, :, 3:] = array[:, :, 3:]
    return result


class Rendering(unittest.TestCase):
    def test_takes_every_layout_of_an_array(self):
        for channels in 3, 4:
            a = picture(channels=channels)
            wide = picture(9, 11, channels)
            for view in (a, a[::-1], a[:, ::-1], wide[1:8, 3:8], wide[::2, ::2],
                         a.transpose(1, 0, 2), numpy.asfortranarray(a)):
                before = view.copy()
                result = fxbox.render(view, INVERT)
                numpy.testing.assert_array_equal(result, inverted(view))
                numpy.testing.assert_array_equal(view, before)
                self.assertTrue(result.flags.writeable)
        swapped = picture()[:, :, ::-1]
        numpy.testing.assert_array_equal(fxbox.render(swapped, INVERT), 255 - swapped)

    def test_colour_goes_through_the_right_channel(self):
        red = numpy.zeros((2, 2, 3), numpy.uint8)
        result = fxbox.render(red, "ZNFilter.RGBColor.1(Red=050, Green=000, Blue=000)")
        self.assertGreater(result[0, 0, 0], 0)
        self.assertEqual(result[0, 0, 2], 0)

    def test_results_live_longer_than_all_else(self):
        results = [fxbox.render(picture(64, 64), INVERT) for _ in range(20)]
        gc.collect()
        for result in results:
            numpy.testing.assert_array_equal(result, inverted(picture(64, 64)))

    def test_transparency_adds_a_channel_where_it_is_wanted(self):
        half = "ZNFilter.Transparency.1(Transparency=050)"
        self.assertEqual(fxbox.render(picture(), half).shape, (7, 5, 4))
        self.assertEqual(fxbox.render(picture(), half, channels=3).shape, (7, 5, 3))
        self.assertEqual(fxbox.render(picture(channels=4), INVERT).shape, (7, 5, 4))
        opaque = fxbox.render(picture(), "", channels=4)
        self.assertTrue((opaque[:, :, 3] == 255).all())

    def test_parts_and_previews(self):
        a = picture(20, 30)
        numpy.testing.assert_array_equal(fxbox.render(a, "", part=(3, 2, 10, 99)), a[2:, 3:13])
        blur = "ZNFilter.BlurGauss.1(Radius=8.0)"
        full, preview = fxbox.render(a, blur), fxbox.render(a, blur, zoom=0.25, full_size=(120, 80))
        self.assertFalse((full == preview).all())

    def test_refuses_what_is_no_picture(self):
        for shape, kind, error, text in (((4, 4), "uint8", ValueError, "for grey"),
                                         ((4, 4, 2), "uint8", ValueError, r"not \(4, 4, 2\)$"),
                                         ((0, 4, 3), "uint8", ValueError, "has pixels"),
                                         ((4, 0, 3), "uint8", ValueError, "has pixels"),
                                         ((4, 4, 3), "uint16", TypeError, "not of uint16"),
                                         ((4, 4, 3), "float64", TypeError, "not of float64"),
                                         ((4, 4, 3), "int8", TypeError, "not of int8")):
            with self.assertRaisesRegex(error, text):
                fxbox.render(numpy.zeros(shape, kind), INVERT)
        for wrong in ({"zoom": 0}, {"zoom": float("nan")}, {"channels": 2}, {"part": (0, 0, 0, 4)},
                      {"part": (0, 0, 4, 0)}, {"part": (99, 0, 1, 1)}, {"full_size": (0, 4)},
                      {"full_size": (4, 0)}):
            with self.assertRaises(ValueError, msg=wrong):
                fxbox.render(picture(), INVERT, **wrong)
        fxbox.render(picture(1, 1), "", full_size=(1, 1), part=(0, 0, 1, 1))
        with self.assertRaisesRegex(fxbox.Error, "more pixels than the 34"):
            fxbox.render(picture(), "", most_pixels=34)

    def test_errors_name_item_and_place(self):
        with self.assertRaises(fxbox.ChainError) as caught:
            fxbox.render(picture(), INVERT + "\nZNFilter.Sepia.1(Sepia=x)")
        error = caught.exception
        self.assertEqual((error.item, error.filter, error.line, error.character),
                         (2, "ZNFilter.Sepia.1", 2, 18))
        self.assertIn("Sepia=x", str(error))
        self.assertIsInstance(error, ValueError)
        fxbox.render(picture(), "ZNFilter.None.1(A=1)", lenient=True)

    def test_threads_give_the_same_bytes(self):
        a = picture(300, 300)
        expected = fxbox.render(a, "ZNFilter.BlurGauss.1(Radius=9.0)")
        self.addCleanup(fxbox.set_threads, 1)
        for count in 3, 0:
            fxbox.set_threads(count)
            result = fxbox.render(a, "ZNFilter.BlurGauss.1(Radius=9.0)")
            numpy.testing.assert_array_equal(result, expected)
        self.assertRaises(ValueError, fxbox.set_threads, -1)


class Stopping(unittest.TestCase):
    large = numpy.full((2000, 2000, 3), 99, numpy.uint8)

    def test_the_interpreter_is_free_and_cancelling_is_quick(self):
        wanted = threading.Event()
        ended = threading.Event()

        def render():
            with self.assertRaises(fxbox.Cancelled):
                fxbox.render(self.large, SLOW, progress=lambda share: not wanted.is_set())
            ended.set()

        thread = threading.Thread(target=render)
        # With the lock held, this thread would not come to its turn before the end.
        thread.start()
        self.assertFalse(ended.wait(0.05))
        wanted.set()
        self.assertTrue(ended.wait(30))
        thread.join()

    def test_progress_rises_to_one(self):
        shares = []
        fxbox.render(picture(500, 500), INVERT, progress=shares.append)
        self.assertEqual(shares, sorted(shares))
        self.assertEqual(shares[-1], 1)

    def test_errors_of_the_progress_function_come_out(self):
        def fail(share):
            raise KeyError("mine")

        with self.assertRaises(KeyError):
            fxbox.render(self.large, SLOW, progress=fail)

    def test_an_interrupt_stops_it(self):
        timer = threading.Timer(0.3, os.kill, (os.getpid(), signal.SIGINT))
        timer.start()
        begun = time.monotonic()
        with self.assertRaises(KeyboardInterrupt):
            while time.monotonic() - begun < 60:
                fxbox.render(self.large, SLOW)
        timer.join()
        self.assertLess(time.monotonic() - begun, 30)


class Chains(unittest.TestCase):
    def test_items_are_edited(self):
        chain = fxbox.Chain("ZNFilter.Sepia.1(Sepia=080) ZNFilter.RGBColor.1(Red=1, Green=-2)")
        self.assertEqual([item.filter for item in chain],
                         ["ZNFilter.Sepia.1", "ZNFilter.RGBColor.1"])
        self.assertEqual(dict(chain[1]), {"Red": 1, "Green": -2})
        chain[0]["Sepia"] = 5
        del chain[1]["Red"]
        chain.insert(1, fxbox.Item("Invert", Inversity=numpy.int64(7)))
        self.assertEqual(str(chain), "ZNFilter.Sepia.1(Sepia=5)ZNFilter.Invert.1(Inversity=7)"
                                     "ZNFilter.RGBColor.1(Green=-2)")
        self.assertEqual(fxbox.Chain(str(chain)), chain)
        self.assertEqual(str(chain[1:2] + chain[:0]), "ZNFilter.Invert.1(Inversity=7)")
        self.assertNotEqual(chain[1:], chain)
        chain[0] = chain[1]
        chain[2:] = [fxbox.Item("Sepia", Sepia=2), chain[2]]
        self.assertEqual([repr(item) for item in chain],
                         ["fxbox.Item('ZNFilter.Invert.1', Inversity=7)"] * 2 +
                         ["fxbox.Item('ZNFilter.Sepia.1', Sepia=2)",
                          "fxbox.Item('ZNFilter.RGBColor.1', Green=-2)"])
        for wrong in (lambda: chain.append("ZNFilter.Invert.1()"),
                      lambda: chain.__setitem__(0, "ZNFilter.Invert.1()")):
            self.assertRaises(TypeError, wrong)

    def test_values_have_the_kind_of_their_key(self):
        item = fxbox.Item("Text", Text="Größe (2 m), 100 %")
        self.assertEqual(item["Text"], "Größe (2 m), 100 %")
        self.assertNotIn("ö", str(item))
        fxbox.Chain([item]).check()
        again = fxbox.Chain(str(item))[0]
        self.assertEqual(again["Text"], item["Text"])
        blur = fxbox.Item("BlurGauss", Radius=0.00001)
        self.assertNotIn("e", str(blur).split("(")[1])
        self.assertEqual(fxbox.Item("BlurGauss", Radius=2.5)["Radius"], 2.5)

    def test_every_filter_is_described(self):
        filters = fxbox.filters()
        self.assertGreaterEqual(len(filters), 46)
        for known in filters:
            self.assertTrue(known.gloss, known)
            fxbox.Chain(known.example).check()
            for key in known.keys:
                self.assertIs(type(key.kind), str)
                if key.least is not None:
                    self.assertLessEqual(key.least, key.greatest, f"{known} {key}")
        sepia = next(known for known in filters if known.name == "ZNFilter.Sepia.1")
        self.assertEqual((sepia.key("Sepia").least, sepia.key("Sepia").greatest), (0, 100))
        self.assertIsNone(sepia.key("None"))
        self.assertEqual([repr(key) for key in sepia.keys], ["<fxbox.Key Sepia>"])
        self.assertRaisesRegex(KeyError, "no filter 'None'", fxbox.help_on, "None")

    def test_checks_and_sizes(self):
        self.assertEqual(fxbox.Chain("").size(3, 4), (3, 4))
        self.assertEqual(fxbox.Chain("").size(1, 1), (1, 1))
        for wrong in (0, 4), (4, 0):
            self.assertRaises(ValueError, fxbox.Chain("").size, *wrong)
        scale = fxbox.Item("Scale", MaximumHorizontalSize=50, MaximumVerticalSize=50)
        self.assertEqual(fxbox.Chain([scale]).size(100, 80), (50, 40))
        scale["Nonsense"] = 1
        self.assertRaises(fxbox.ChainError, fxbox.Chain([scale]).check)
        self.assertEqual(len(fxbox.Chain("ZNFilter.None.1(A=1)", lenient=True)), 1)


class Boxes(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def test_pictures_go_in_and_out(self):
        for path in self.folder / "shots.box", f"{self.folder}/shots/":
            box = fxbox.Box(path)
            a, b = picture(), picture(9, 4, 4)
            box["sea"] = a
            box["hill"] = b
            numpy.testing.assert_array_equal(box["sea"], a)
            numpy.testing.assert_array_equal(box.read("hill"), b)
            self.assertEqual(sorted(box), ["hill", "sea"])
            box["sea"] = b
            numpy.testing.assert_array_equal(box["sea"], b)
            box.set_note("sea", "Größe")
            self.assertEqual(fxbox.Box(path).note("sea"), "Größe")
            self.assertTrue(box.read_file("sea").startswith(b"\x89PNG"))
            box["sea"] = a
            self.assertEqual(box.note("sea"), "", "it was another picture's")
            box.set_note("sea", "Größe")
            del box["sea"]
            box["sea"] = a
            self.assertEqual(box.note("sea"), "")
            del box["hill"]
            self.assertEqual(box.names(), ["sea"])
            self.assertEqual(len(box), 1)
            self.assertNotIn("hill", box)
        places = [self.folder / "shots_kv" / "Pictures" / name for name in ("Hill.jpg", "hill.png")]
        for path in places:
            path.write_bytes(b"")
        box["hill"] = a
        self.assertEqual(sorted(box), ["hill", "sea"])
        self.assertFalse(any(path.exists() for path in places), "what had the name")

    def test_failures_are_errors(self):
        with self.assertRaisesRegex(fxbox.Error, "no such file"):
            fxbox.Box(self.folder / "none.box").names()
        box = fxbox.Box(self.folder / "a.box")
        box["x"] = picture()
        with self.assertRaisesRegex(fxbox.Error, "no such picture"):
            box["y"]
        for name in "", "..", "Pictures":
            with self.assertRaises(ValueError, msg=name):
                box[name] = picture()
        (self.folder / "text.box").write_text("no box")
        with self.assertRaises(fxbox.Error):
            fxbox.Box(self.folder / "text.box").names()


def invert_shared(name):
    shared = fxbox.SharedPicture(name)
    shared.pixels[...] = 255 - shared.pixels


class Sharing(unittest.TestCase):
    def test_another_process_sees_and_changes_it(self):
        name = f"python test {os.getpid()}"
        for channels in 3, 4:
            a = picture(channels=channels)
            shared = fxbox.SharedPicture(name, a)
            numpy.testing.assert_array_equal(shared.copy(), a)
            other = multiprocessing.get_context("spawn").Process(target=invert_shared, args=(name,))
            other.start()
            other.join()
            self.assertEqual(other.exitcode, 0)
            numpy.testing.assert_array_equal(shared.copy(), inverted(a))
            with self.assertRaisesRegex(fxbox.Error, "somebody shares"):
                fxbox.SharedPicture(name, a)
            self.assertEqual(shared.mask is None, channels == 3)
            if channels == 4:
                numpy.testing.assert_array_equal(shared.mask, 255 - a[:, :, 3])
            view = shared.pixels
            del shared
            gc.collect()
            numpy.testing.assert_array_equal(view, inverted(a)[:, :, :3])
            del view
            gc.collect()
        with self.assertRaisesRegex(fxbox.Error, "nobody shares"):
            fxbox.SharedPicture(name)


def load_tests(loader, tests, ignored):
    for module in fxbox, fxbox._chain, fxbox._errors:
        tests.addTests(doctest.DocTestSuite(module))
    return tests


if __name__ == "__main__":
    unittest.main()
