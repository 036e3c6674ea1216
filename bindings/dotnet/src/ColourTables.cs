using System;

namespace NerovaZel
{
    /// <summary>How pictures show the angle as hue; docs/pictures.md defines them.</summary>
    public enum ColourStyle
    {
        /// <summary>Hue only.</summary>
        Plain,

        /// <summary>Unpolarized is white.</summary>
        Light,

        /// <summary>Unpolarized is black.</summary>
        Dark,

        /// <summary>The degree as saturation, the power as brightness.</summary>
        Composite,
    }

    /// <summary>Colours azimuth, degree and power as the tool's pictures do. May be used from any number of threads.</summary>
    public sealed unsafe partial class ColourTables : IDisposable
    {
        private readonly ColoursHandle handle;
        private readonly ColourStyle style;
        private readonly int outputMaximum;

        /// <summary>Makes the tables of a style.</summary>
        /// <param name="style">How to colour.</param>
        /// <param name="outputMaximum">Of the images, 1 to 65535.</param>
        /// <param name="degreeEnd">Where the scale of the degree ends, above 0; 1 is a degree of 1.</param>
        /// <param name="powerEnd">Where the scale of the power ends, above 0; 1 is full scale.</param>
        public ColourTables(ColourStyle style, int outputMaximum = 65535, double degreeEnd = 1, double powerEnd = 1)
        {
            this.style = style;
            this.outputMaximum = outputMaximum;
            byte[] name = Utf8.Bytes(style.ToString().ToLowerInvariant(), nameof(style));
            Failure.ThrowIfFailed(
                NativeMethods.nv_imaging_create_colours(name, outputMaximum, degreeEnd, powerEnd, out handle));
        }

        /// <summary>The azimuth image that angles stand for; NaN becomes 0.</summary>
        /// <param name="angle">Degrees, such as <see cref="Images.Angle"/>.</param>
        /// <param name="outputMaximum">What 180 degrees map to, 1 to 65535.</param>
        public static ushort[] AzimuthOfAngles(float[] angle, int outputMaximum = 65535)
        {
            Check.NotNull(angle, nameof(angle));
            var azimuth = new ushort[angle.LongLength];
            fixed (float* from = angle)
            fixed (ushort* to = azimuth)
            {
                if (angle.LongLength != 0)
                {
                    Failure.ThrowIfFailed(NativeMethods.nv_imaging_azimuth_of_angles(
                        from, RawFrames.Size(angle.LongLength), outputMaximum, to));
                }
            }

            return azimuth;
        }

        /// <summary>Releases the tables. Not while another thread uses them.</summary>
        public void Dispose()
        {
            handle.Dispose();
        }

        /// <summary>Colours images of <see cref="Processor"/> that have the azimuth or the angle, and the degree and power
        /// that the style needs.</summary>
        /// <param name="images">Of the tables' output maximum.</param>
        /// <returns>Red, green and blue of each pixel.</returns>
        /// <exception cref="ArgumentException">An image is missing, or the output maximum is another one.</exception>
        public byte[] Paint(Images images)
        {
            Check.NotNull(images, nameof(images));
            if (images.OutputMaximum != outputMaximum)
            {
                throw new ArgumentException(
                    $"The images' output maximum is {images.OutputMaximum}, that of the tables {outputMaximum}.",
                    nameof(images));
            }

            ushort[] azimuth = images.Azimuth;
            if (azimuth == null && images.Angle != null)
            {
                azimuth = AzimuthOfAngles(images.Angle, outputMaximum);
            }

            Check.NotNull(azimuth, nameof(images.Azimuth));
            var rgb = new byte[3 * azimuth.LongLength];
            Paint(azimuth, images.Degree, images.Power, rgb);
            return rgb;
        }

        /// <summary>Colours pixels.</summary>
        /// <param name="azimuth">The output of that name.</param>
        /// <param name="degree">The output of that name, as many elements; may be null in the style plain.</param>
        /// <param name="power">The output of that name, as many elements; may be null but in the style composite.</param>
        /// <param name="rgb">Room for red, green and blue of each pixel.</param>
        /// <exception cref="ArgumentException">An array has another size.</exception>
        public void Paint(ushort[] azimuth, ushort[] degree, ushort[] power, byte[] rgb)
        {
            Check.NotNull(azimuth, nameof(azimuth));
            long pixels = azimuth.LongLength;
            if (style != ColourStyle.Plain || degree != null)
            {
                Check.Size(degree, pixels, nameof(degree));
            }

            if (style == ColourStyle.Composite || power != null)
            {
                Check.Size(power, pixels, nameof(power));
            }

            Check.Size(rgb, 3 * pixels, nameof(rgb));
            fixed (ushort* angles = azimuth, degrees = degree, powers = power)
            fixed (byte* to = rgb)
            {
                Paint((IntPtr)angles, (IntPtr)degrees, (IntPtr)powers, pixels, (IntPtr)to);
            }
        }

        /// <summary>As above, between addresses.</summary>
        /// <param name="azimuth">Address of 16-bit pixels, aligned to 2 bytes, as are the next two.</param>
        /// <param name="degree">May be zero in the style plain.</param>
        /// <param name="power">May be zero but in the style composite.</param>
        /// <param name="pixels">How many.</param>
        /// <param name="rgb">Address of room for 3 bytes of each pixel.</param>
        public void Paint(IntPtr azimuth, IntPtr degree, IntPtr power, long pixels, IntPtr rgb)
        {
            Failure.ThrowIfFailed(NativeMethods.nv_imaging_paint(
                handle, (ushort*)azimuth, (ushort*)degree, (ushort*)power, RawFrames.Size(pixels), (byte*)rgb));
        }
    }
}
