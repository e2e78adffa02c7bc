       01  FROM-HERE PICTURE
              IS
