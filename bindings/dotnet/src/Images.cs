using System;

namespace NerovaZel
{
    /// <summary>Images that a frame can be turned into. S1 is I0 - I90 and S2 is I45 - I135.</summary>
    [Flags]
    public enum Outputs
    {
        /// <summary>None.</summary>
        None = 0,

        /// <summary>S1 / P and S2 / P: two floats for each pixel; NaN or infinite without light.</summary>
        Stokes = 1,

        /// <summary>P = (I0 + I45 + I90 + I135) / 2 as a share of full scale, times the output maximum.</summary>
        Power = 2,

        /// <summary>S1 likewise; 0 where it is negative.</summary>
        HorizontalVertical = 4,

        /// <summary>S2 likewise.</summary>
        Diagonal = 8,

        /// <summary>(Angle + 90 degrees) modulo 180 degrees, where 180 degrees are the output maximum.</summary>
        Azimuth = 16,

        /// <summary>Degree of linear polarization times the output maximum; 0 without light.</summary>
        Degree = 32,

        /// <summary>P in pixel values, floats, not clipped.</summary>
        S0 = 64,

        /// <summary>S1 likewise, also negative.</summary>
        S1 = 128,

        /// <summary>S2 likewise.</summary>
        S2 = 256,

        /// <summary>Angle of linear polarization, floats, degrees, at least 0 and below 180, counter-clockwise from the
        /// image's horizontal axis; NaN without light.</summary>
        Angle = 512,
    }

    /// <summary>Arrays for the images of a frame, row by row; null where one is not wanted. They may be used for any
    /// number of frames, which is faster than new ones.</summary>
    public sealed class Images
    {
        /// <summary>No images.</summary>
        /// <param name="outputMaximum">What full scale, 180 degrees and a degree of 1 map to in 16-bit images: 1 to
        /// 65535.</param>
        public Images(int outputMaximum = 65535)
        {
            Check.Range(outputMaximum, 1, 65535, nameof(outputMaximum));
            OutputMaximum = outputMaximum;
        }

        /// <summary>New arrays for what is wanted.</summary>
        /// <param name="format">Of the frames.</param>
        /// <param name="wanted">One or more outputs.</param>
        /// <param name="outputMaximum">As above.</param>
        public Images(FrameFormat format, Outputs wanted, int outputMaximum = 65535)
            : this(outputMaximum)
        {
            Check.NotNull(format, nameof(format));
            Stokes = Floats(format, wanted, Outputs.Stokes, 2);
            Power = Codes(format, wanted, Outputs.Power);
            HorizontalVertical = Codes(format, wanted, Outputs.HorizontalVertical);
            Diagonal = Codes(format, wanted, Outputs.Diagonal);
            Azimuth = Codes(format, wanted, Outputs.Azimuth);
            Degree = Codes(format, wanted, Outputs.Degree);
            S0 = Floats(format, wanted, Outputs.S0);
            S1 = Floats(format, wanted, Outputs.S1);
            S2 = Floats(format, wanted, Outputs.S2);
            Angle = Floats(format, wanted, Outputs.Angle);
        }

        /// <summary>What full scale, 180 degrees and a degree of 1 map to in 16-bit images.</summary>
        public int OutputMaximum { get; }

        /// <summary>See <see cref="Outputs.Stokes"/>: two elements for each pixel, one after the other.</summary>
        public float[] Stokes { get; set; }

        /// <summary>See <see cref="Outputs.Power"/>.</summary>
        public ushort[] Power { get; set; }

        /// <summary>See <see cref="Outputs.HorizontalVertical"/>.</summary>
        public ushort[] HorizontalVertical { get; set; }

        /// <summary>See <see cref="Outputs.Diagonal"/>.</summary>
        public ushort[] Diagonal { get; set; }

        /// <summary>See <see cref="Outputs.Azimuth"/>.</summary>
        public ushort[] Azimuth { get; set; }

        /// <summary>See <see cref="Outputs.Degree"/>.</summary>
        public ushort[] Degree { get; set; }

        /// <summary>See <see cref="Outputs.S0"/>.</summary>
        public float[] S0 { get; set; }

        /// <summary>See <see cref="Outputs.S1"/>.</summary>
        public float[] S1 { get; set; }

        /// <summary>See <see cref="Outputs.S2"/>.</summary>
        public float[] S2 { get; set; }

        /// <summary>See <see cref="Outputs.Angle"/>.</summary>
        public float[] Angle { get; set; }

        internal void CheckSizes(long pixels)
        {
            CheckSize(Stokes, 2 * pixels, nameof(Stokes));
            CheckSize(Power, pixels, nameof(Power));
            CheckSize(HorizontalVertical, pixels, nameof(HorizontalVertical));
            CheckSize(Diagonal, pixels, nameof(Diagonal));
            CheckSize(Azimuth, pixels, nameof(Azimuth));
            CheckSize(Degree, pixels, nameof(Degree));
            CheckSize(S0, pixels, nameof(S0));
            CheckSize(S1, pixels, nameof(S1));
            CheckSize(S2, pixels, nameof(S2));
            CheckSize(Angle, pixels, nameof(Angle));
        }

        private static float[] Floats(FrameFormat format, Outputs wanted, Outputs output, int channels = 1)
        {
            return (wanted & output) == 0 ? null : new float[channels * format.PixelCount];
        }

        private static ushort[] Codes(FrameFormat format, Outputs wanted, Outputs output)
        {
            return (wanted & output) == 0 ? null : new ushort[format.PixelCount];
        }

        private static void CheckSize(Array array, long wanted, string name)
        {
            if (array != null)
            {
                Check.Size(array.LongLength, wanted, name);
            }
        }
    }

    /// <summary>Addresses of memory for the images of a frame: elements as in <see cref="Images"/>, each aligned to its
    /// size; <see cref="IntPtr.Zero"/> where one is not wanted. Sizes cannot be checked: too little room is
    /// overwritten beyond its end.</summary>
    public struct ImagePointers
    {
        /// <summary>Floats, two for each pixel.</summary>
        public IntPtr Stokes;

        /// <summary>16 bits.</summary>
        public IntPtr Power;

        /// <summary>16 bits.</summary>
        public IntPtr HorizontalVertical;

        /// <summary>16 bits.</summary>
        public IntPtr Diagonal;

        /// <summary>16 bits.</summary>
        public IntPtr Azimuth;

        /// <summary>16 bits.</summary>
        public IntPtr Degree;

        /// <summary>Floats.</summary>
        public IntPtr S0;

        /// <summary>Floats.</summary>
        public IntPtr S1;

        /// <summary>Floats.</summary>
        public IntPtr S2;

        /// <summary>Floats.</summary>
        public IntPtr Angle;

        /// <summary>1 to 65535.</summary>
        public int OutputMaximum;

        internal unsafe NativeImages Native()
        {
            Check.Range(OutputMaximum, 1, 65535, nameof(OutputMaximum));
            return new NativeImages
            {
                Stokes = (float*)Stokes,
                Power = (ushort*)Power,
                HorizontalVertical = (ushort*)HorizontalVertical,
                Diagonal = (ushort*)Diagonal,
                Azimuth = (ushort*)Azimuth,
                Degree = (ushort*)Degree,
                S0 = (float*)S0,
                S1 = (float*)S1,
                S2 = (float*)S2,
                Angle = (float*)Angle,
                OutputMaximum = OutputMaximum,
            };
        }
    }
}
