// A raw frame to a picture of the angle of polarization, and what its light is on average.
// Usage: FirstPicture PICTURE.ppm [FRAME.raw WIDTH HEIGHT PIXEL_FORMAT LAYOUT]
using System;
using System.Globalization;
using System.IO;
using System.Text;
using NerovaZel;

internal static class FirstPicture
{
    private static int Main(string[] arguments)
    {
        if (arguments.Length != 1 && arguments.Length != 6)
        {
            Console.Error.WriteLine("usage: FirstPicture PICTURE.ppm [FRAME.raw WIDTH HEIGHT PIXEL_FORMAT LAYOUT]");
            return 2;
        }

        try
        {
            FrameFormat format;
            ushort[] pixels;
            if (arguments.Length == 1)
            {
                format = new FrameFormat(612, 512, layout: 90, bitDepth: 12);
                pixels = new Scene(format) { Photons = 10000 }.Simulate().Pixels;
            }
            else
            {
                string pixelFormat = arguments[4];
                format = new FrameFormat(
                    int.Parse(arguments[2], CultureInfo.InvariantCulture),
                    int.Parse(arguments[3], CultureInfo.InvariantCulture),
                    layout: int.Parse(arguments[5], CultureInfo.InvariantCulture),
                    bitDepth: RawFrames.BitDepth(pixelFormat));
                pixels = RawFrames.Unpack(pixelFormat, File.ReadAllBytes(arguments[1]), format.PixelCount);
            }

            using (var processor = new Processor(threads: Math.Min(Environment.ProcessorCount, 16)))
            using (var colours = new ColourTables(ColourStyle.Dark))
            {
                Images images = processor.Transform(format, pixels, Outputs.Azimuth | Outputs.Degree);
                FrameStatistics statistics = processor.ComputeStatistics(format, pixels);
                using (FileStream picture = File.Create(arguments[0]))
                {
                    byte[] header = Encoding.ASCII.GetBytes($"P6\n{format.Width} {format.Height}\n255\n");
                    byte[] rgb = colours.Paint(images);
                    picture.Write(header, 0, header.Length);
                    picture.Write(rgb, 0, rgb.Length);
                }

                Console.WriteLine(string.Format(
                    CultureInfo.InvariantCulture, "mean angle {0:F1} degrees, mean degree {1:F3}, by {2}",
                    statistics.MeanAngle, statistics.MeanDegree, Processor.Route));
            }

            return 0;
        }
        catch (Exception exception) when (
            exception is PolarizationException || exception is ArgumentException || exception is IOException
            || exception is FormatException)
        {
            Console.Error.WriteLine("FirstPicture: " + exception.Message);
            return 1;
        }
    }
}
