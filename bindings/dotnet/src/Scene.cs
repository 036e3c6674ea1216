using System;

namespace NerovaZel
{
    /// <summary>A camera and what it sees: a glossy sphere and a wheel of polarizers, or the same light everywhere.</summary>
    public sealed unsafe class Scene
    {
        /// <summary>An ideal camera without noise.</summary>
        /// <param name="format">Of its frames.</param>
        public Scene(FrameFormat format)
        {
            Check.NotNull(format, nameof(format));
            Format = format;
        }

        /// <summary>Of the camera's frames.</summary>
        public FrameFormat Format { get; }

        /// <summary>Three numbers: the linear Stokes parameters of the same light everywhere, where s0 = 1 without a polarizer
        /// fills a pixel. Null for the scene.</summary>
        public double[] Light { get; set; }

        /// <summary>Photo-electrons that fill a pixel, for shot noise; a usual sensor holds 10000. 0 for no noise.</summary>
        public double Photons { get; set; }

        /// <summary>Pixel value without light.</summary>
        public double DarkLevel { get; set; }

        /// <summary>Degrees by which the polarizers 0, 45, 90, 135 are turned.</summary>
        public double[] AngleErrors { get; set; } = { 0, 0, 0, 0 };

        /// <summary>Their extinction ratios, at least 1; may be infinite.</summary>
        public double[] Extinctions { get; set; } =
        {
            double.PositiveInfinity, double.PositiveInfinity, double.PositiveInfinity, double.PositiveInfinity,
        };

        /// <summary>Relative response of the pixels below them, above 0.</summary>
        public double[] Gains { get; set; } = { 1, 1, 1, 1 };

        /// <summary>Of the noise: the same settings give the same frame. At least 0.</summary>
        public long Seed { get; set; } = 1;

        /// <summary>The light of a source behind a linear polarizer, for <see cref="Light"/>.</summary>
        /// <param name="angle">Of the polarizer, degrees counter-clockwise from the image's horizontal axis.</param>
        /// <param name="power">As a share of what fills a pixel behind an aligned polarizer; 0 for a dark frame.</param>
        public static double[] LinearSource(double angle, double power = 0.8)
        {
            double twice = 2 * angle * Math.PI / 180;
            return new[] { power, power * Math.Cos(twice), power * Math.Sin(twice) };
        }

        /// <summary>Simulates a frame.</summary>
        /// <exception cref="ArgumentException">An array has another size.</exception>
        /// <exception cref="PolarizationException">A number is out of its range.</exception>
        public SimulatedFrame Simulate()
        {
            var scene = new NativeScene
            {
                Width = Format.Width,
                Height = Format.Height,
                OriginX = Format.OriginX,
                OriginY = Format.OriginY,
                Layout = Format.Layout,
                BitDepth = Format.BitDepth,
                Uniform = Light == null ? 0 : 1,
                Photons = Photons,
                DarkLevel = DarkLevel,
                Seed = checked((ulong)Seed),
            };
            if (Light != null)
            {
                Copy(Light, scene.Light, 3, nameof(Light));
            }

            Copy(AngleErrors, scene.AngleErrors, 4, nameof(AngleErrors));
            Copy(Extinctions, scene.Extinctions, 4, nameof(Extinctions));
            Copy(Gains, scene.Gains, 4, nameof(Gains));
            var result = new SimulatedFrame(Format);
            fixed (ushort* pixels = result.Pixels)
            fixed (float* s0 = result.S0, s1 = result.S1, s2 = result.S2)
            {
                Failure.ThrowIfFailed(NativeMethods.nv_imaging_simulate(&scene, pixels, s0, s1, s2));
            }

            return result;
        }

        private static void Copy(double[] from, double* to, int count, string name)
        {
            Check.Size(from, count, name);
            for (int index = 0; index < count; ++index)
            {
                to[index] = from[index];
            }
        }
    }

    /// <summary>A frame of known light.</summary>
    public sealed class SimulatedFrame
    {
        internal SimulatedFrame(FrameFormat format)
        {
            Format = format;
            Pixels = new ushort[format.PixelCount];
            S0 = new float[format.PixelCount];
            S1 = new float[format.PixelCount];
            S2 = new float[format.PixelCount];
        }

        /// <summary>What the frame is.</summary>
        public FrameFormat Format { get; }

        /// <summary>The raw frame.</summary>
        public ushort[] Pixels { get; }

        /// <summary>True total light of each output pixel as a share of what fills a pixel, at the centre of the 2 x 2 pixels
        /// that it is computed from.</summary>
        public float[] S0 { get; }

        /// <summary>True S1 likewise.</summary>
        public float[] S1 { get; }

        /// <summary>True S2 likewise.</summary>
        public float[] S2 { get; }
    }
}
