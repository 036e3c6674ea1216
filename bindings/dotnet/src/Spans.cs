#if NETSTANDARD2_1_OR_GREATER || NETCOREAPP2_1_OR_GREATER || NEROVA_ZEL_SPANS
using System;
using System.Runtime.InteropServices;

namespace NerovaZel
{
    /// <summary>Memory for the images of a frame: elements as in <see cref="Images"/>; empty where one is not wanted.</summary>
    public ref struct ImageSpans
    {
        /// <summary>Two elements for each pixel.</summary>
        public Span<float> Stokes;

        /// <summary>See <see cref="Outputs.Power"/>.</summary>
        public Span<ushort> Power;

        /// <summary>See <see cref="Outputs.HorizontalVertical"/>.</summary>
        public Span<ushort> HorizontalVertical;

        /// <summary>See <see cref="Outputs.Diagonal"/>.</summary>
        public Span<ushort> Diagonal;

        /// <summary>See <see cref="Outputs.Azimuth"/>.</summary>
        public Span<ushort> Azimuth;

        /// <summary>See <see cref="Outputs.Degree"/>.</summary>
        public Span<ushort> Degree;

        /// <summary>See <see cref="Outputs.S0"/>.</summary>
        public Span<float> S0;

        /// <summary>See <see cref="Outputs.S1"/>.</summary>
        public Span<float> S1;

        /// <summary>See <see cref="Outputs.S2"/>.</summary>
        public Span<float> S2;

        /// <summary>See <see cref="Outputs.Angle"/>.</summary>
        public Span<float> Angle;

        /// <summary>1 to 65535.</summary>
        public int OutputMaximum;
    }

    public sealed unsafe partial class Processor
    {
        /// <summary>As the overload with arrays, of pixels in any memory.</summary>
        /// <param name="format">What the frame is.</param>
        /// <param name="pixels">Width times height.</param>
        /// <param name="images">Only the arrays that are not null are written.</param>
        public void Transform(FrameFormat format, ReadOnlySpan<ushort> pixels, Images images)
        {
            Check.NotNull(format, nameof(format));
            Check.Size(pixels.Length, format.PixelCount, nameof(pixels));
            fixed (ushort* first = &MemoryMarshal.GetReference(pixels))
            {
                Transform(format, (IntPtr)first, images);
            }
        }

        /// <summary>As the overload with arrays, between any memory.</summary>
        /// <param name="format">What the frame is.</param>
        /// <param name="pixels">Width times height.</param>
        /// <param name="images">Where the images go.</param>
        public void Transform(FrameFormat format, ReadOnlySpan<ushort> pixels, ImageSpans images)
        {
            Check.NotNull(format, nameof(format));
            Check.Size(pixels.Length, format.PixelCount, nameof(pixels));
            CheckSize(images.Stokes.Length, 2 * format.PixelCount, nameof(images.Stokes));
            CheckSize(images.Power.Length, format.PixelCount, nameof(images.Power));
            CheckSize(images.HorizontalVertical.Length, format.PixelCount, nameof(images.HorizontalVertical));
            CheckSize(images.Diagonal.Length, format.PixelCount, nameof(images.Diagonal));
            CheckSize(images.Azimuth.Length, format.PixelCount, nameof(images.Azimuth));
            CheckSize(images.Degree.Length, format.PixelCount, nameof(images.Degree));
            CheckSize(images.S0.Length, format.PixelCount, nameof(images.S0));
            CheckSize(images.S1.Length, format.PixelCount, nameof(images.S1));
            CheckSize(images.S2.Length, format.PixelCount, nameof(images.S2));
            CheckSize(images.Angle.Length, format.PixelCount, nameof(images.Angle));
            fixed (ushort* first = &MemoryMarshal.GetReference(pixels))
            fixed (float* stokes = &MemoryMarshal.GetReference(images.Stokes))
            fixed (ushort* power = &MemoryMarshal.GetReference(images.Power))
            fixed (ushort* horizontalVertical = &MemoryMarshal.GetReference(images.HorizontalVertical))
            fixed (ushort* diagonal = &MemoryMarshal.GetReference(images.Diagonal))
            fixed (ushort* azimuth = &MemoryMarshal.GetReference(images.Azimuth))
            fixed (ushort* degree = &MemoryMarshal.GetReference(images.Degree))
            fixed (float* s0 = &MemoryMarshal.GetReference(images.S0))
            fixed (float* s1 = &MemoryMarshal.GetReference(images.S1))
            fixed (float* s2 = &MemoryMarshal.GetReference(images.S2))
            fixed (float* angle = &MemoryMarshal.GetReference(images.Angle))
            {
                // A part of no elements may have an address too.
                Transform(format, (IntPtr)first, new ImagePointers
                {
                    Stokes = images.Stokes.IsEmpty ? IntPtr.Zero : (IntPtr)stokes,
                    Power = images.Power.IsEmpty ? IntPtr.Zero : (IntPtr)power,
                    HorizontalVertical = images.HorizontalVertical.IsEmpty ? IntPtr.Zero : (IntPtr)horizontalVertical,
                    Diagonal = images.Diagonal.IsEmpty ? IntPtr.Zero : (IntPtr)diagonal,
                    Azimuth = images.Azimuth.IsEmpty ? IntPtr.Zero : (IntPtr)azimuth,
                    Degree = images.Degree.IsEmpty ? IntPtr.Zero : (IntPtr)degree,
                    S0 = images.S0.IsEmpty ? IntPtr.Zero : (IntPtr)s0,
                    S1 = images.S1.IsEmpty ? IntPtr.Zero : (IntPtr)s1,
                    S2 = images.S2.IsEmpty ? IntPtr.Zero : (IntPtr)s2,
                    Angle = images.Angle.IsEmpty ? IntPtr.Zero : (IntPtr)angle,
                    OutputMaximum = images.OutputMaximum,
                });
            }
        }

        /// <summary>As the overload with arrays, of pixels in any memory.</summary>
        /// <param name="format">What the frame is.</param>
        /// <param name="pixels">Width times height.</param>
        /// <param name="region">The part to take; null for all.</param>
        /// <param name="weight">How pixels count.</param>
        public FrameStatistics ComputeStatistics(
            FrameFormat format, ReadOnlySpan<ushort> pixels, Region? region = null, Weight weight = Weight.Equal)
        {
            Check.NotNull(format, nameof(format));
            Check.Size(pixels.Length, format.PixelCount, nameof(pixels));
            fixed (ushort* first = &MemoryMarshal.GetReference(pixels))
            {
                return ComputeStatistics(format, (IntPtr)first, region, weight);
            }
        }

        private static void CheckSize(int length, long wanted, string name)
        {
            if (length != 0)
            {
                Check.Size(length, wanted, name);
            }
        }
    }

    public static unsafe partial class RawFrames
    {
        /// <summary>As the overload with arrays, between any memory.</summary>
        /// <param name="pixelFormat">A name of <see cref="PixelFormats"/>.</param>
        /// <param name="bytes">Of one frame or more.</param>
        /// <param name="pixels">Of one frame, at least 1.</param>
        /// <param name="unpacked">As many elements as there are pixels in all frames.</param>
        /// <param name="threads">At most so many threads unpack.</param>
        public static void Unpack(
            string pixelFormat, ReadOnlySpan<byte> bytes, long pixels, Span<ushort> unpacked, int threads = 1)
        {
            Check.Size(unpacked.Length, FrameCount(pixelFormat, bytes.Length, pixels) * pixels, nameof(unpacked));
            fixed (byte* from = &MemoryMarshal.GetReference(bytes))
            fixed (ushort* to = &MemoryMarshal.GetReference(unpacked))
            {
                Unpack(pixelFormat, (IntPtr)from, bytes.Length, pixels, (IntPtr)to, threads);
            }
        }
    }

    public sealed unsafe partial class ColourTables
    {
        /// <summary>As the overload with arrays, between any memory.</summary>
        /// <param name="azimuth">The output of that name.</param>
        /// <param name="degree">As many elements; may be empty in the style plain.</param>
        /// <param name="power">As many elements; may be empty but in the style composite.</param>
        /// <param name="rgb">Room for red, green and blue of each pixel.</param>
        public void Paint(
            ReadOnlySpan<ushort> azimuth, ReadOnlySpan<ushort> degree, ReadOnlySpan<ushort> power, Span<byte> rgb)
        {
            if (style != ColourStyle.Plain || !degree.IsEmpty)
            {
                Check.Size(degree.Length, azimuth.Length, nameof(degree));
            }

            if (style == ColourStyle.Composite || !power.IsEmpty)
            {
                Check.Size(power.Length, azimuth.Length, nameof(power));
            }

            Check.Size(rgb.Length, 3L * azimuth.Length, nameof(rgb));
            fixed (ushort* angles = &MemoryMarshal.GetReference(azimuth))
            fixed (ushort* degrees = &MemoryMarshal.GetReference(degree))
            fixed (ushort* powers = &MemoryMarshal.GetReference(power))
            fixed (byte* to = &MemoryMarshal.GetReference(rgb))
            {
                Paint((IntPtr)angles, (IntPtr)degrees, (IntPtr)powers, azimuth.Length, (IntPtr)to);
            }
        }
    }
}
#endif
