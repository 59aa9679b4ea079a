// Judges a trial against a standard through the C interface, by P/Invoke: a class over the functions, and its use.
//     mcs Judge.cs && LD_LIBRARY_PATH=... mono Judge.exe
using System;
using System.Globalization;
using System.Runtime.InteropServices;
using System.Text;

/// <summary>A call that the library refused, with its reason.</summary>
public class VrxException : Exception {
  public VrxException(string reason) : base(reason) {}
}

/// <summary>A difference system with its parameters.</summary>
[StructLayout(LayoutKind.Sequential)]
public struct DifferenceSystem {
  public int Number;
  public int OwnFormula;
  [MarshalAs(UnmanagedType.ByValArray, SizeConst = 4)]
  public double[] Parameters;
  public double Angle;
}

/// <summary>One standard and its tolerances under several illuminants.</summary>
public sealed class Judgement : IDisposable {
  public const int D65 = 2, A = 0, Observer10 = 1, Cmc = 1;

  private int handle;
  private readonly int illuminants;

  public Judgement(DifferenceSystem system, int[] illuminants, int observer) {
    Check(Native.vrx_judgement_open(ref system, illuminants, illuminants.Length, observer, out handle));
    this.illuminants = illuminants.Length;
  }

  public static DifferenceSystem DefaultSystem(int number) {
    var system = new DifferenceSystem { Parameters = new double[4] };
    Check(Native.vrx_default_system(number, ref system));
    return system;
  }

  public static string IlluminantName(int illuminant) {
    var text = new StringBuilder(64);
    int length;
    Check(Native.vrx_illuminant_name16(illuminant, Observer10, 4, text, text.Capacity, out length));
    return text.ToString();
  }

  public double[] Standard {
    set { Check(Native.vrx_judgement_standard(handle, Curve(value))); }
  }

  public void SetBox(int illuminant, double[] box) {
    if (box.Length != 7) throw new ArgumentException("a box has 7 limits");
    Check(Native.vrx_judgement_box(handle, illuminant, box));
  }

  /// <summary>Verdicts (0 fail, 1 warning, 2 pass) and total differences of a trial, one an illuminant.</summary>
  public int[] Judge(double[] curve, out double[] totals) {
    var verdicts = new int[illuminants];
    var differences = new double[7 * illuminants];
    Check(Native.vrx_judgement_trials(handle, Curve(curve), 1, verdicts, differences, IntPtr.Zero));
    totals = new double[illuminants];
    for (int i = 0; i < illuminants; ++i) totals[i] = differences[7 * i + 6];
    return verdicts;
  }

  public void Dispose() {
    if (handle != 0) Native.vrx_close(handle);
    handle = 0;
  }

  private static double[] Curve(double[] samples) {
    if (samples.Length != 40) throw new ArgumentException("a curve has 40 samples");
    return samples;
  }

  private static void Check(int status) {
    if (status == 0) return;
    var reason = new StringBuilder(200);
    int length;
    Native.vrx_last_error16(reason, reason.Capacity, out length);
    throw new VrxException(reason.ToString());
  }

  private static class Native {
    private const string Library = "vrxmath_c";

    [DllImport(Library)] internal static extern int vrx_default_system(int number, ref DifferenceSystem system);
    [DllImport(Library)] internal static extern int vrx_judgement_open(
        ref DifferenceSystem system, int[] illuminants, int count, int observer, out int judgement);
    [DllImport(Library)] internal static extern int vrx_judgement_standard(int judgement, double[] curve);
    [DllImport(Library)] internal static extern int vrx_judgement_box(int judgement, int index, double[] box);
    [DllImport(Library)] internal static extern int vrx_judgement_trials(
        int judgement, double[] curves, int count, [Out] int[] verdicts, [Out] double[] differences, IntPtr words);
    [DllImport(Library)] internal static extern int vrx_close(int handle);
    [DllImport(Library, CharSet = CharSet.Unicode)] internal static extern int vrx_last_error16(
        StringBuilder text, int capacity, out int length);
    [DllImport(Library, CharSet = CharSet.Unicode)] internal static extern int vrx_illuminant_name16(
        int illuminant, int observer, int style, StringBuilder text, int capacity, out int length);
  }
}

public static class Program {
  public static int Main() {
    var standard = new double[40];
    var trial = new double[40];
    for (int i = 0; i < 40; ++i) {
      standard[i] = i < 16 ? 12.0 : 62.0;
      trial[i] = i < 16 ? 12.2 : 61.0;
    }
    var lamps = new[] { Judgement.D65, Judgement.A };
    using (var judgement = new Judgement(Judgement.DefaultSystem(Judgement.Cmc), lamps, Judgement.Observer10)) {
      judgement.Standard = standard;
      for (int i = 0; i < lamps.Length; ++i) judgement.SetBox(i, new[] { 1.0, 1.0, 0.8, 0.8, 1.5, 1.5, 0.6 });
      double[] totals;
      int[] verdicts = judgement.Judge(trial, out totals);
      for (int i = 0; i < lamps.Length; ++i) {
        string total = totals[i].ToString("0.00", CultureInfo.InvariantCulture);
        Console.WriteLine("{0,-4} dE {1}  {2}", Judgement.IlluminantName(lamps[i]), total,
                          new[] { "fail", "warning", "pass" }[verdicts[i]]);
      }
    }
    return 0;
  }
}
