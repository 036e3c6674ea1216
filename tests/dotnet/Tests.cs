// The class library against files that the tool made of the same frame, and what only a garbage collector can do to it.
// Usage: Tests.exe FOLDER TOOL MODULE_DEFINITION...
using System;
using System.Collections.Generic;
using System.Diagnostics;
using System.IO;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;
using System.Text.RegularExpressions;
using System.Threading;
using NerovaZel;

internal static class Tests
{
    private static readonly FrameFormat Format = new FrameFormat(615, 301, 90, 12);
    private static readonly FrameFormat Small = new FrameFormat(160, 128, 90, 12);
    private const Outputs All = (Outputs)1023;
    private static string folder;
    private static string tool;
    private static ushort[] frame;
    private static int checks;

    private static int Main(string[] arguments)
    {
        folder = arguments[0];
        tool = arguments[1];
        frame = new Scene(Format) { Photons = 10000 }.Simulate().Pixels;
        File.WriteAllBytes(At("frame.raw"), BytesOf(frame));
        EveryFunctionIsThere(arguments.Skip(2));
        ImagesAreThoseOfTheTool();
        StatisticsAreThoseOfTheTool();
        PicturesAreThoseOfTheTool();
        FramesAreUnpackedAndSplit();
        CalibrationIsThatOfTheTool();
        EachColourHasItsCalibration();
        FailuresHaveTheirReasons();
        ForgottenObjectsAreReleased();
#if NEROVA_ZEL_SPANS
        SpansAreLikeArrays();
#endif
        Console.WriteLine(checks + " checks passed");
        return 0;
    }

    private static void EveryFunctionIsThere(IEnumerable<string> definitions)
    {
        var exported = definitions.SelectMany(File.ReadAllLines).Select(line => line.Trim().Split(' ')[0])
            .Where(word => word.StartsWith("nv_", StringComparison.Ordinal));
        var declared = typeof(Processor).Assembly.GetType("NerovaZel.NativeMethods")
            .GetMethods(BindingFlags.NonPublic | BindingFlags.Static).Where(method => method.Name.StartsWith("nv_"));
        Same(exported.OrderBy(name => name), declared.Select(method => method.Name).OrderBy(name => name), "functions");
        foreach (MethodInfo method in declared)
        {
            Marshal.Prelink(method);
        }
    }

    private static void ImagesAreThoseOfTheTool()
    {
        Run("simulate own.raw --size 615x301 --photons 10000");
        Same(BytesOf(frame), File.ReadAllBytes(At("own.raw")), "simulated frame");
        Run("transform frame.raw --raw 615x301 --pixel-format Mono12 --layout 90 --format npy -o out "
            + "--outputs stokes,power,hv,diagonal,azimuth,dolp,s0,s1,s2,angle");
        foreach (int threads in new[] { 1, 3 })
        {
            using (var processor = new Processor(threads))
            {
                SameImages(processor.Transform(Format, frame, All), "out");
                SameImages(processor.Transform(Format, frame, (Outputs)63), "out");  // by the processor's own library
            }
        }
    }

    private static void StatisticsAreThoseOfTheTool()
    {
        foreach (Weight weight in new[] { Weight.Equal, Weight.Power })
        {
            string json = Run("stats frame.raw --raw 615x301 --pixel-format Mono12 --layout 90 --roi 100,50,300,201 --json "
                + "--weight " + weight.ToString().ToLowerInvariant());
            json = json.Substring(json.IndexOf("\"all\"", StringComparison.Ordinal));
            using (var processor = new Processor(2))
            {
                FrameStatistics found = processor.ComputeStatistics(Format, frame, new Region(100, 50, 300, 201), weight);
                Close(Number(json, "pixels"), found.Pixels, "pixels");
                Close(Number(json, "mean_angle_degrees"), found.MeanAngle, "mean angle");
                Close(Number(json, "resultant_length"), found.Resultant, "resultant");
                Close(Number(json, "angle_deviation_degrees"), found.AngleDeviation, "deviation");
                Close(Number(json, "mean_degree"), found.MeanDegree, "mean degree");
                Close(Number(json, "pixels_without_angle"), found.WithoutAngle, "without angle");
                string dark = json.Substring(json.IndexOf("\"dark_pixels\"", StringComparison.Ordinal));
                Close(Number(dark, "hv"), found.Dark.HorizontalVertical, "dark pixels");
                Close(Number(dark, "dolp"), found.Dark.Degree, "dark pixels");
                FrameStatistics twice = found + found;
                Close(2 * found.Pixels, twice.Pixels, "sum");
                Close(found.MeanDegree, twice.MeanDegree, "sum");
            }
        }
    }

    private static void PicturesAreThoseOfTheTool()
    {
        using (var processor = new Processor())
        {
            Images images = processor.Transform(Format, frame, All);
            foreach (ColourStyle style in Enum.GetValues(typeof(ColourStyle)))
            {
                using (var colours = new ColourTables(style, degreeEnd: 0.5, powerEnd: 0.8))
                {
                    // The script that runs this compares them.
                    File.WriteAllBytes(At(style.ToString().ToLowerInvariant() + ".rgb"), colours.Paint(images));
                    ushort[] azimuth = ColourTables.AzimuthOfAngles(new[] { 0F, 89.9F, 90F, float.NaN });
                    Same(new ushort[] { 32768, 65499, 0, 0 }, azimuth, "azimuth of angles");
                }
            }
        }
    }

    private static void FramesAreUnpackedAndSplit()
    {
        // Two frames of five pixels, Mono12p: bits from the lowest on, each frame from a byte on.
        byte[] packed = { 0x21, 0x43, 0x65, 0x87, 0xA9, 0xCB, 0xED, 0x0F, 1, 0x20, 0, 3, 0x40, 0, 5, 0 };
        ushort[] pixels = { 0x321, 0x654, 0x987, 0xCBA, 0xFED, 1, 2, 3, 4, 5 };
        Same(pixels, RawFrames.Unpack("Mono12p", packed, 5, 2), "Mono12p");
        Close(12, RawFrames.BitDepth("Mono12p"), "bit depth");
        True(RawFrames.PixelFormats().Contains("Mono12p"), "names of formats");
        File.WriteAllBytes(At("run.raw"), packed);
        const string about = "{\"format\": \"nerova-zel-recording\", \"version\": 1, \"pixel_format\": \"BayerRGPolarized12p\", "
            + "\"width\": 5, \"height\": 2, \"origin\": {\"x\": 1, \"y\": 2}, \"layout\": 45, \"frames\": ";
        File.WriteAllText(At("run.raw.json"), about + "1}");
        using (var recording = new Recording(At("run.raw")))
        {
            Same(RawFrames.Unpack("Mono12p", packed.Take(15).ToArray(), 10), recording.Read(0), "recorded frame");
            True(recording.Colour == "RGGB" && recording.Format.Layout == 45 && recording.Format.OriginY == 2, "recording");
            Fails<ArgumentOutOfRangeException>(() => recording.Read(1), "1 frames");
        }

        File.WriteAllText(At("run.raw.json"), about + "2}");
        Fails<InvalidDataException>(() => new Recording(At("run.raw")), "holds 16 bytes");
        File.WriteAllText(At("run.raw.json"), "{}");
        Fails<PolarizationException>(() => new Recording(At("run.raw")), "describe a recording");
        ushort[] cells = Enumerable.Range(0, 32).Select(number => (ushort)number).ToArray();
        ushort[][] planes = RawFrames.SplitColours(cells, 8, 4, "GRBG");
        Same(new ushort[] { 2, 3, 6, 7, 10, 11, 14, 15 }, planes[0], "red");
        Same(new ushort[] { 16, 17, 20, 21, 24, 25, 28, 29 }, planes[3], "blue");
    }

    private static void CalibrationIsThatOfTheTool()
    {
        var camera = new Scene(Small)
        {
            Photons = 10000, DarkLevel = 64, AngleErrors = new[] { 1.2, -0.8, -1.5, 0.6 },
            Extinctions = new double[] { 300, 150, 220, 90 },
        };
        var list = new List<string>();
        using (var series = new CalibrationSeries(Small))
        {
            for (int angle = 0; angle < 180; angle += 15)
            {
                camera.Seed = angle + 1;
                camera.Light = Scene.LinearSource(angle);
                ushort[] pixels = camera.Simulate().Pixels;
                series.Add(angle + " degrees", angle, pixels);
                File.WriteAllBytes(At(angle + ".raw"), BytesOf(pixels));
                list.Add(angle + "," + angle + ".raw");
            }

            camera.Light = Scene.LinearSource(0, 0);
            ushort[] dark = camera.Simulate().Pixels;
            series.SetDark("dark", dark);
            File.WriteAllBytes(At("dark.raw"), BytesOf(dark));
            File.WriteAllLines(At("angles.csv"), list);
            const string raw = " --raw 160x128 --pixel-format Mono12 --layout 90";
            Run("calibrate --list angles.csv --dark dark.raw -o tool.json" + raw);
            using (Calibration fitted = series.Fit())
            {
                True(Math.Abs(fitted.Polarizers[2].AngleError + 1.5) < 0.05, "angle of a polarizer");
                Close(12, fitted.Residuals.GetLength(0), "residuals");
                Close(64, Math.Round(fitted.DarkLevels[3], 1), "dark level");
                fitted.Save(At("own.json"));
                fitted.Save(At("own.json"));
            }

            using (Calibration own = Calibration.Load(At("own.json")), tools = Calibration.Load(At("tool.json")))
            using (var processor = new Processor(own, 2))
            {
                Same(tools.Matrices, own.Matrices, "matrices");
                Same(own.Matrices, processor.GetMatrices(), "matrices of the processor");
                Close(12, own.BitDepth, "depth of the calibration");
                Run("transform 45.raw --calibration own.json --format npy -o corrected --outputs azimuth,s1" + raw);
                ushort[] pixels = UInt16s(File.ReadAllBytes(At("45.raw")));
                SameImages(processor.Transform(Small, pixels, Outputs.Azimuth | Outputs.S1), "corrected", "45");
                Fails<PolarizationException>(
                    () => processor.Transform(new FrameFormat(160, 128, 90, 10), pixels, Outputs.Power), "has 10 bits");
            }
        }
    }

    private static void EachColourHasItsCalibration()
    {
        var list = new List<string>();
        for (int angle = 0; angle < 180; angle += 45)
        {
            Run("simulate c" + angle + ".raw --size 64x48 --colour RGGB --photons 10000 --angle-errors=1.2,-0.8,-1.5,0.6 "
                + "--source-angle " + angle + " --seed " + (angle + 1));
            list.Add(angle + ",c" + angle + ".raw");
        }

        File.WriteAllLines(At("colours.csv"), list);
        const string raw = " --raw 64x48 --pixel-format Mono12 --layout 90 --colour RGGB";
        Run("calibrate --list colours.csv -o colours.json" + raw);
        Run("transform c45.raw --calibration colours.json --format npy -o colours --outputs s1" + raw);
        byte[] expected = File.ReadAllBytes(At("colours/c45_s1_r_g1_g2_b.npy"));
        ushort[][] planes = RawFrames.SplitColours(UInt16s(File.ReadAllBytes(At("c45.raw"))), 64, 48, "RGGB");
        var format = new FrameFormat(32, 24, 90, 12);
        int size = 4 * (int)format.PixelCount;
        Calibration[] calibrations = Calibration.LoadColours(At("colours.json"));
        for (int plane = 0; plane < 4; ++plane)
        {
            using (var processor = new Processor(calibrations[plane]))
            {
                float[] s1 = processor.Transform(format, planes[plane], Outputs.S1).S1;
                Same(expected.Skip(expected.Length - ((4 - plane) * size)).Take(size), BytesOf(s1), "colour " + plane);
            }
        }

        Fails<InvalidOperationException>(() => calibrations[0].Save(At("one.json")), "one colour");
        Fails<PolarizationException>(() => Calibration.LoadColours(At("tool.json")), "without colours");
    }

    private static void FailuresHaveTheirReasons()
    {
        using (var processor = new Processor())
        {
            Fails<ArgumentException>(() => processor.Transform(Small, frame, Outputs.Power), "20480");
            Fails<ArgumentException>(
                () => processor.Transform(Format, frame, new Images { Angle = new float[7] }), "185115");
            Fails<PolarizationException>(() => processor.Transform(Format, frame, Outputs.None), "no output");
            Fails<PolarizationException>(
                () => processor.Transform(Format, frame, new Images { Power = frame }), "an output is the input");
            Fails<PolarizationException>(
                () => processor.ComputeStatistics(Format, frame, new Region(600, 0, 20, 20)), "region");
            Fails<ArgumentException>(() => RawFrames.Unpack("Mono12p", new byte[7], 5), "takes 8");
            processor.Dispose();
            Fails<ObjectDisposedException>(() => processor.Transform(Format, frame, Outputs.Power), string.Empty);
        }

        Fails<ArgumentOutOfRangeException>(() => new FrameFormat(4, 4, 30, 12), "0, 45, 90 or 135");
        Fails<PolarizationException>(() => RawFrames.BitDepth("Größe"), "Größe");
        Fails<PolarizationException>(() => Calibration.Read("{}", "camera"), "camera");
        Fails<ArgumentException>(() => new Scene(Small) { Gains = new double[3] }.Simulate(), "must have 4");
    }

    // Were a handle released during a call, or the module's count taken back too often, this would end the process.
    private static void ForgottenObjectsAreReleased()
    {
        bool same = true;
        ushort[] expected = new Processor().Transform(Format, frame, Outputs.Power).Power;
        ThreadStart work = () =>
        {
            for (int round = 0; round < 20; ++round)
            {
                same &= new Processor(1 + (round % 2)).Transform(Format, frame, Outputs.Power).Power.SequenceEqual(expected);
                GC.Collect();
                GC.WaitForPendingFinalizers();
            }
        };
        Thread[] threads = { new Thread(work), new Thread(work), new Thread(work) };
        Array.ForEach(threads, thread => thread.Start());
        Array.ForEach(threads, thread => thread.Join());
        True(same, "images of forgotten processors");
    }

#if NEROVA_ZEL_SPANS
    private static void SpansAreLikeArrays()
    {
        // One row of the frame more on each side, of which the spans are parts.
        var images = new Images(new FrameFormat(615, 303, 90, 12), All);
        int pixels = (int)Format.PixelCount;
        using (var processor = new Processor(2))
        using (var colours = new ColourTables(ColourStyle.Composite))
        {
            var spans = new ImageSpans
            {
                Stokes = images.Stokes.AsSpan(2 * 615, 2 * pixels), Power = images.Power.AsSpan(615, pixels),
                HorizontalVertical = images.HorizontalVertical.AsSpan(615, pixels),
                Diagonal = images.Diagonal.AsSpan(615, pixels), Azimuth = images.Azimuth.AsSpan(615, pixels),
                Degree = images.Degree.AsSpan(615, pixels), S0 = images.S0.AsSpan(615, pixels),
                S1 = images.S1.AsSpan(615, pixels), S2 = images.S2.AsSpan(615, pixels),
                Angle = images.Angle.AsSpan(615, pixels), OutputMaximum = 65535,
            };
            processor.Transform(Format, frame.AsSpan(), spans);
            Images whole = processor.Transform(Format, frame, All);
            var inner = new Images
            {
                Stokes = spans.Stokes.ToArray(), Power = spans.Power.ToArray(), Degree = spans.Degree.ToArray(),
                HorizontalVertical = spans.HorizontalVertical.ToArray(), Diagonal = spans.Diagonal.ToArray(),
                Azimuth = spans.Azimuth.ToArray(), S0 = spans.S0.ToArray(), S1 = spans.S1.ToArray(),
                S2 = spans.S2.ToArray(), Angle = spans.Angle.ToArray(),
            };
            SameImages(inner, "out");
            True(images.Power.Take(615).All(value => value == 0), "memory before a span");
            var rgb = new byte[3 * pixels];
            colours.Paint(spans.Azimuth, spans.Degree, spans.Power, rgb);
            Same(colours.Paint(whole), rgb, "picture");
            Close(processor.ComputeStatistics(Format, frame).MeanAngle,
                  processor.ComputeStatistics(Format, frame.AsSpan()).MeanAngle, "mean angle");
        }

        Fails<ArgumentException>(
            () => RawFrames.Unpack("Mono8", new byte[4].AsSpan(), 4, new ushort[3].AsSpan()), "must have 4");
    }
#endif

    private static void SameImages(Images images, string place, string name = "frame")
    {
        var known = new Dictionary<string, Array>
        {
            { "stokes", images.Stokes }, { "power", images.Power }, { "hv", images.HorizontalVertical },
            { "diagonal", images.Diagonal }, { "azimuth", images.Azimuth }, { "dolp", images.Degree },
            { "s0", images.S0 }, { "s1", images.S1 }, { "s2", images.S2 }, { "angle", images.Angle },
        };
        foreach (var output in known.Where(pair => pair.Value != null))
        {
            byte[] file = File.ReadAllBytes(At(Path.Combine(place, name + "_" + output.Key + ".npy")));
            int start = 10 + file[8] + (256 * file[9]);
            Same(file.Skip(start), BytesOf(output.Value), output.Key);
        }
    }

    private static byte[] BytesOf(Array values)
    {
        var bytes = new byte[Buffer.ByteLength(values)];
        Buffer.BlockCopy(values, 0, bytes, 0, bytes.Length);
        return bytes;
    }

    private static ushort[] UInt16s(byte[] bytes)
    {
        var values = new ushort[bytes.Length / 2];
        Buffer.BlockCopy(bytes, 0, values, 0, bytes.Length);
        return values;
    }

    private static string At(string name)
    {
        return Path.Combine(folder, name);
    }

    private static string Run(string options)
    {
        var start = new ProcessStartInfo(tool, options)
        {
            WorkingDirectory = folder, RedirectStandardOutput = true, UseShellExecute = false,
        };
        using (Process process = Process.Start(start))
        {
            string said = process.StandardOutput.ReadToEnd();
            process.WaitForExit();
            True(process.ExitCode == 0, "nerova-polarize " + options);
            return said;
        }
    }

    private static double Number(string json, string name)
    {
        string text = Regex.Match(json, "\"" + name + "\": *([-+.0-9e]+)").Groups[1].Value;
        return double.Parse(text, System.Globalization.CultureInfo.InvariantCulture);
    }

    private static void True(bool holds, string what)
    {
        if (!holds)
        {
            throw new InvalidOperationException("not as expected: " + what);
        }

        ++checks;
    }

    private static void Same<T>(IEnumerable<T> expected, IEnumerable<T> found, string what)
    {
        True(expected.SequenceEqual(found), what);
    }

    private static void Close(double expected, double found, string what)
    {
        True(Math.Abs(expected - found) <= 1e-9 * Math.Abs(expected), what + " is " + found + ", not " + expected);
    }

    private static void Fails<T>(Action action, string words)
        where T : Exception
    {
        try
        {
            action();
        }
        catch (T exception)
        {
            True(exception.Message.Contains(words), "\"" + exception.Message + "\" without \"" + words + "\"");
            return;
        }

        True(false, "no " + typeof(T).Name + " about " + words);
    }
}
