           SELECT TF ASSIGN "tf.dat".
           SELECT TF2 ASSIGN "tf2.dat".
