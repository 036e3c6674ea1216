using System;
using System.Threading;

namespace NerovaZel
{
    /// <summary>Computes images and statistics of polarization of raw frames. Create one and use it for all frames, from
    /// any number of threads at the same time.</summary>
    public sealed unsafe partial class Processor : IDisposable
    {
        private readonly ProcessorHandle handle;
        private readonly Calibration calibration;
        private readonly ThreadLocal<ushort[]> withoutDark;

        /// <summary>A processor with the default matrices.</summary>
        /// <param name="threads">At most so many compute one frame, 1 or more; the bits are the same.</param>
        /// <exception cref="PolarizationException">No processor could be created.</exception>
        /// <exception cref="DllNotFoundException">The library nerova_zel_polarization_processor was not found.</exception>
        public Processor(int threads = 1)
        {
            Check.Range(threads, 1, 1024, nameof(threads));
            Threads = threads;
            handle = ProcessorHandle.Create();
        }

        /// <summary>A processor for a camera: takes its dark levels from the frames and uses its matrices. Only vector
        /// plugins apply matrices to every pixel, see <see cref="CalibrationReachesEveryPixel"/>.</summary>
        /// <param name="calibration">May be disposed after the processor only.</param>
        /// <param name="threads">As above.</param>
        public Processor(Calibration calibration, int threads = 1)
            : this(threads)
        {
            Check.NotNull(calibration, nameof(calibration));
            this.calibration = calibration;
            withoutDark = new ThreadLocal<ushort[]>();
            SetMatrices(calibration.Matrices);
        }

        /// <summary>What computes frames on this computer: "avx512", "avx2", "built-in SSE4.1" or "built-in SSE2".</summary>
        public static string Route
        {
            get
            {
                IntPtr name;
                Failure.ThrowIfFailed(NativeMethods.nv_imaging_route(out name));
                return Utf8.Text(name);
            }
        }

        /// <summary>Whether matrices are applied to the whole frame. Without a vector plugin they reach the last columns
        /// and rows only.</summary>
        public static bool CalibrationReachesEveryPixel
        {
            get { return !Route.StartsWith("built-in", StringComparison.Ordinal); }
        }

        /// <summary>At most so many threads compute one frame.</summary>
        public int Threads { get; }

        /// <summary>Releases the processor. Not while another thread calls it.</summary>
        public void Dispose()
        {
            handle.Dispose();
            withoutDark?.Dispose();
        }

        /// <summary>Replaces the four matrices, for the polarizers 0, 45, 90, 135. Not while another thread uses the
        /// processor.</summary>
        /// <param name="matrices">64 elements: four matrices of 4 x 4 by rows, see polarization_processor.h.</param>
        public void SetMatrices(float[] matrices)
        {
            Check.Size(matrices, 64, nameof(matrices));
            fixed (float* first = matrices)
            {
                Failure.ThrowIfProcessorFailed(
                    NativeMethods.nv_polarization_processor_set_custom_calibration_coefficients(
                        handle, first, first + 16, first + 32, first + 48));
            }
        }

        /// <summary>A copy of the matrices in force: 64 elements, as above.</summary>
        public float[] GetMatrices()
        {
            var matrices = new float[64];
            fixed (float* first = matrices)
            {
                Failure.ThrowIfProcessorFailed(
                    NativeMethods.nv_polarization_processor_get_custom_calibration_coefficients(
                        handle, first, first + 16, first + 32, first + 48));
            }

            return matrices;
        }

        /// <summary>Computes images of one frame into new arrays.</summary>
        /// <param name="format">What the frame is.</param>
        /// <param name="pixels">Width times height.</param>
        /// <param name="wanted">One or more outputs.</param>
        /// <param name="outputMaximum">What full scale, 180 degrees and a degree of 1 map to in 16-bit images.</param>
        /// <exception cref="ArgumentException">An array has another size.</exception>
        /// <exception cref="PolarizationException">The frame cannot be computed; its message says why.</exception>
        public Images Transform(FrameFormat format, ushort[] pixels, Outputs wanted, int outputMaximum = 65535)
        {
            var images = new Images(format, wanted, outputMaximum);
            Transform(format, pixels, images);
            return images;
        }

        /// <summary>Computes images of one frame into the arrays of <paramref name="images"/>, each of the frame's
        /// size.</summary>
        /// <param name="format">What the frame is.</param>
        /// <param name="pixels">Width times height.</param>
        /// <param name="images">Only the arrays that are not null are written.</param>
        /// <exception cref="ArgumentException">An array has another size.</exception>
        /// <exception cref="PolarizationException">The frame cannot be computed; its message says why.</exception>
        public void Transform(FrameFormat format, ushort[] pixels, Images images)
        {
            CheckFrame(format, pixels);
            fixed (ushort* first = pixels)
            {
                Transform(format, (IntPtr)first, images);
            }
        }

        /// <summary>As above, of a frame at an address, such as a camera's buffer.</summary>
        /// <param name="format">What the frame is.</param>
        /// <param name="pixels">Address of width times height pixels of 16 bits, aligned to 2 bytes.</param>
        /// <param name="images">Only the arrays that are not null are written.</param>
        public void Transform(FrameFormat format, IntPtr pixels, Images images)
        {
            Check.NotNull(format, nameof(format));
            Check.NotNull(images, nameof(images));
            images.CheckSizes(format.PixelCount);
            fixed (float* stokes = images.Stokes, s0 = images.S0, s1 = images.S1, s2 = images.S2, angle = images.Angle)
            fixed (ushort* power = images.Power, horizontalVertical = images.HorizontalVertical,
                diagonal = images.Diagonal, azimuth = images.Azimuth, degree = images.Degree)
            {
                var native = new NativeImages
                {
                    Stokes = stokes,
                    Power = power,
                    HorizontalVertical = horizontalVertical,
                    Diagonal = diagonal,
                    Azimuth = azimuth,
                    Degree = degree,
                    S0 = s0,
                    S1 = s1,
                    S2 = s2,
                    Angle = angle,
                    OutputMaximum = images.OutputMaximum,
                };
                Compute(format, (ushort*)pixels, native);
            }
        }

        /// <summary>As above, between addresses.</summary>
        /// <param name="format">What the frame is.</param>
        /// <param name="pixels">Address of width times height pixels of 16 bits, aligned to 2 bytes.</param>
        /// <param name="images">Where the images go; their sizes cannot be checked.</param>
        public void Transform(FrameFormat format, IntPtr pixels, ImagePointers images)
        {
            Check.NotNull(format, nameof(format));
            Compute(format, (ushort*)pixels, images.Native());
        }

        /// <summary>Statistics of one frame, by the default matrices or those of the calibration. Their bits do not depend
        /// on the number of threads.</summary>
        /// <param name="format">What the frame is.</param>
        /// <param name="pixels">Width times height.</param>
        /// <param name="region">The part to take, as if the camera had read out no more; null for all.</param>
        /// <param name="weight">How pixels count.</param>
        public FrameStatistics ComputeStatistics(
            FrameFormat format, ushort[] pixels, Region? region = null, Weight weight = Weight.Equal)
        {
            CheckFrame(format, pixels);
            fixed (ushort* first = pixels)
            {
                return ComputeStatistics(format, (IntPtr)first, region, weight);
            }
        }

        /// <summary>As above, of a frame at an address.</summary>
        /// <param name="format">What the frame is.</param>
        /// <param name="pixels">Address of width times height pixels of 16 bits, aligned to 2 bytes.</param>
        /// <param name="region">The part to take; null for all.</param>
        /// <param name="weight">How pixels count.</param>
        public FrameStatistics ComputeStatistics(
            FrameFormat format, IntPtr pixels, Region? region = null, Weight weight = Weight.Equal)
        {
            Check.NotNull(format, nameof(format));
            Check.NotNull(pixels, nameof(pixels));
            int* part = stackalloc int[4];
            if (region.HasValue)
            {
                part[0] = region.Value.X;
                part[1] = region.Value.Y;
                part[2] = region.Value.Width;
                part[3] = region.Value.Height;
            }

            NativeStatistics statistics;
            fixed (ushort* room = RoomWithoutDark(format))
            {
                NativeFrame frame = WithoutDark(format, (ushort*)pixels, room);
                Failure.ThrowIfFailed(NativeMethods.nv_imaging_compute_statistics(
                    handle, &frame, region.HasValue ? part : null, (int)weight, Threads, &statistics));
            }

            return new FrameStatistics(statistics);
        }

        private static void CheckFrame(FrameFormat format, ushort[] pixels)
        {
            Check.NotNull(format, nameof(format));
            Check.Size(pixels, format.PixelCount, nameof(pixels));
        }

        // Without imaging where the processor's own library suffices, so that a program may come without the other.
        private void Compute(FrameFormat format, ushort* pixels, NativeImages images)
        {
            Check.NotNull((IntPtr)pixels, nameof(pixels));
            fixed (ushort* room = RoomWithoutDark(format))
            {
                NativeFrame frame = WithoutDark(format, pixels, room);
                bool more = images.S0 != null || images.S1 != null || images.S2 != null || images.Angle != null;
                if (more || Threads > 1)
                {
                    Failure.ThrowIfFailed(NativeMethods.nv_imaging_transform(handle, &frame, &images, Threads));
                    return;
                }

                Failure.ThrowIfProcessorFailed(NativeMethods.nv_polarization_processor_transform(
                    handle, format.Layout / 45, frame.Pixels, format.OriginX, format.OriginY, format.Width, format.Height,
                    format.BitDepth, (ushort)images.OutputMaximum, images.Stokes, images.Power, images.HorizontalVertical,
                    images.Diagonal, images.Azimuth, images.Degree));
            }
        }

        // Kept by each thread for its next frame.
        private ushort[] RoomWithoutDark(FrameFormat format)
        {
            if (calibration == null)
            {
                return null;
            }

            ushort[] room = withoutDark.Value;
            if (room == null || room.LongLength != format.PixelCount)
            {
                room = new ushort[format.PixelCount];
                withoutDark.Value = room;
            }

            return room;
        }

        private NativeFrame WithoutDark(FrameFormat format, ushort* pixels, ushort* room)
        {
            NativeFrame frame = format.Native(pixels);
            if (calibration != null)
            {
                calibration.SubtractDark(&frame, room);
                frame.Pixels = room;
            }

            return frame;
        }
    }
}
